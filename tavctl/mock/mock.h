// Makes a bus on which the boxes of a plan are listed.
#pragma once

#include "tavctl/match/matchedDevice.h"
#include "tavctl/mock/catalog.h"
#include "tavctl/mock/plan.h"
#include "tavctl/mock/recordedMachine.h"

#include <string>
#include <vector>

namespace tavctl::mock {

struct MadeBus {
    std::string text; // as lspci -xxx prints a bus, or the options of QEMU that make it
    // The devices that the plug-in lists for what is there of the plan, in its order and under the
    // names that it gives them first.
    std::vector<MatchedDevice> boxes;
    bool isRenumbered = false; // whether recorded bus numbers have changed
};

// How the bus is told.
enum class Form { dump, qemuOptions };

// `on` is a recorded bus that the boxes are added to; null: a machine of their own. `program` is
// who makes it, for the comment at the top. Raises FailureException when the plug-in would not list
// exactly what is planned.
MadeBus makeBus(const Plan& whole, const Catalog& catalog, const RecordedMachine* on,
                const std::string& program, Form form = Form::dump);

} // namespace tavctl::mock
