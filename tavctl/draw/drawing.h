// The devices of a bus as a drawing for Graphviz.
#pragma once

#include "tavctl/bus/pciNames.h"
#include "tavctl/view/busTreeView.h"

#include <cstdint>
#include <span>
#include <string>

namespace tavctl {

struct DrawingOptions {
    enum class Kind : std::uint8_t {
        // A box for each device with its connectors in label order and what is plugged into them,
        // one box leading to the next.
        devices,
        machine, // and a box for every bridge with what is below it
        fronts,  // the devices' front plates
    };
    std::string title;
    Kind kind = Kind::devices;
};

// DOT text, which "dot" lays out. The domain of the devices is the first. Devices of which its view
// shows nothing are left out.
std::string drawingAsDot(std::span<const BusTreeView> domains, const PciNames& names,
                         const DrawingOptions& options);

} // namespace tavctl
