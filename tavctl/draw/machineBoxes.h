// Which boxes a drawing of the whole machine has, what stands in them, and which leads to which.
#pragma once

#include "tavctl/draw/placement.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tavctl {

// One function in a box, and the box that it leads to.
struct FunctionRow {
    const pcibus::PciFunction* function = nullptr; // the bus owns it
    std::optional<std::size_t> device;             // that it belongs to; drawn
    bool leadsToDevice = false;                    // to the box of that device
    std::optional<std::size_t> bridgeBox;          // of what is below the function
    bool isOnWay = false; // to a further part of the device that it stands in: it leads nowhere
};

// What is on one bus.
struct BridgeBox {
    std::uint8_t bus = 0;
    const pcibus::PciFunction* bridge = nullptr; // above it; null: a root bus
    std::vector<FunctionRow> rows;
    bool isApart = false; // a tile of its own, which no line leads to
    bool isList = false;  // it leads to many, which stand apart
};

// What a device's box has in the drawing of a machine besides its connectors' own texts.
struct DeviceParts {
    bool isDrawn = false;
    bool isApart = false;
    std::vector<FunctionRow> inside; // on the device's own buses, and no part of its description
    std::vector<std::optional<std::size_t>> bridgeBoxes;  // of its ports
    std::vector<std::vector<std::size_t>> devicesInPorts; // that lines lead to
};

struct MachineBoxes {
    std::vector<BridgeBox> bridges;
    std::vector<DeviceParts> devices; // as in the view
};

// Of what the view shows. A box that leads to many others stands apart from them.
MachineBoxes machineBoxes(const BusTreeView& view, const Placement& placement);

} // namespace tavctl
