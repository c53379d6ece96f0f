// The devices of a bus as a drawing for Graphviz: a box for each device with its connectors in
// label order and what is plugged into them, one box leading to the next.
#pragma once

#include "tavctl/bus/pciNames.h"
#include "tavctl/view/busTreeView.h"

#include <string>

namespace tavctl {

struct DrawingOptions {
    std::string title;
    bool allFunctions = false; // add what the root buses have besides the devices
};

// DOT text, which "dot" lays out. Devices of which the view shows nothing are left out.
std::string drawingAsDot(const BusTreeView& view, const PciNames& names,
                         const DrawingOptions& options);

} // namespace tavctl
