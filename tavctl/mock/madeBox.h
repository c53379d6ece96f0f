// A box of a plan as functions of a machine.
#pragma once

#include "tavctl/mock/boxShape.h"
#include "tavctl/mock/catalog.h"
#include "tavctl/mock/labelWidths.h"
#include "tavctl/mock/machine.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tavctl::mock {

// The functions stand where the box was plugged in, and stay there.
struct MadeBox {
    const PlannedBox* plan = nullptr;
    std::string name;
    std::size_t model = 0; // in the catalog
    std::uint8_t rootBus = 0;
    Way way; // from the root bus to the bus that the box is plugged into
    BoxShape shape;
    LabelWidths widths;
    const Function* anchor = nullptr;
    const Function* reported = nullptr;     // where it is not the anchor
    const Function* upstreamPort = nullptr; // null: none
    std::vector<Function*> ports;           // as described; null for one that is missing
};

// Makes a box as described for the anchor of that number, with what the plan says of it, but puts
// it nowhere: `functions` are those of the bus that it would be plugged into. Raises
// FailureException where the description or the plan does not allow it.
MadeBox makeBox(const PlannedBox& plan, const Catalog& catalog, std::size_t anchor,
                Functions& functions);

// Refuses a box because of what lint says of its description; else for the reason given.
[[noreturn]] void refuseBox(const BoxModel& model, const std::string& place, std::string reason);

} // namespace tavctl::mock
