// One device that the plug-in's code lists, with what the plug-in's interface does not tell of it:
// the model that it was matched by, where its anchor stands, and which bridges its ports are.
#pragma once

#include "pxidrivertools/cSlotPath.h"
#include "quil/tBusAddress.h"
#include "source/deviceRecord.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavctl {

// The handle by which a bus finds the function that answers there.
[[nodiscard]] constexpr std::uint32_t handleOf(const nZoTavManagerPciPlugin_15_0::tBusAddress& at) {
    return static_cast<std::uint32_t>(at.bus << 8U | at.device << 3U | at.function);
}

// A described downstream port.
struct MatchedPort {
    // Where it should stand. None: it could not be looked for there.
    std::optional<nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cSlotPath> place;
    // The bridge that stands there. None: it is missing.
    std::optional<nZoTavManagerPciPlugin_15_0::tBusAddress> bridge;
    // What the record has of it, one entry for each label that it takes.
    std::vector<nZoTavManagerPciPlugin_15_0::tPortEntry> entries;
};

struct MatchedDevice {
    nZoTavManagerPciPlugin_15_0::tDeviceRecord record;
    std::uint32_t model = 0;                          // its position in load order
    nZoTavManagerPciPlugin_15_0::tBusAddress address; // of the anchor
    std::string slotPath; // of the anchor, in machine form: its section of the name file
    std::optional<nZoTavManagerPciPlugin_15_0::tBusAddress> upstreamPort;
    std::vector<MatchedPort> ports; // as described; those that no label was left for, too
};

} // namespace tavctl
