// Puts the boxes of a plan into a machine.
#pragma once

#include "tavctl/mock/catalog.h"
#include "tavctl/mock/madeBox.h"
#include "tavctl/mock/plan.h"
#include "tavctl/mock/recordedMachine.h"

#include <string>
#include <vector>

namespace tavctl::mock {

struct BuiltMachine {
    Machine machine;
    std::vector<MadeBox> boxes; // in the order of the plan
    bool isRenumbered = false;  // whether recorded bus numbers have changed
};

// A device of a recorded machine, with what can be plugged into.
struct PresentDevice {
    std::string name;
    struct Connector {
        std::string label;
        std::uint32_t bridge; // handle
    };
    std::vector<Connector> connectors;
};

// `recorded` is what boxes are added to, null for a machine of their own, with its devices as
// `present`. The numbers of the anchors are those of the boxes. The plan must outlive what is
// built. Raises FailureException.
BuiltMachine build(const Plan& plan, const std::vector<std::size_t>& anchors,
                   const Catalog& catalog, const RecordedMachine* recorded,
                   const std::vector<PresentDevice>& present);

// The names of a plan's boxes: those of the command line are called as the plug-in would call them,
// were they listed in that order.
std::vector<std::string> namesOf(const Plan& plan, const Catalog& catalog,
                                 const std::vector<PresentDevice>& present);

} // namespace tavctl::mock
