// What the plug-in knows of one device found: plain values, independent of every bridge, model and
// library that they came from.
#pragma once

#include "source/modelDescription.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nZoTavManagerPciPlugin_15_0 {

inline constexpr std::uint32_t kNoWalkValue = 0xFFFFFFFF;

// One connector label of a device. A port that takes several labels has an entry for each.
struct tPortEntry {
    std::string connectorLabel;
    std::uint32_t first = 0;  // bus below the port
    std::uint32_t second = 0; // the port's link width; 0: the model gives no width per label
    std::uint32_t third = 0;  // the port's link speed; 0: the same
};

struct tDeviceRecord {
    std::uint8_t bus = 0;
    std::uint8_t device = 0;
    std::uint8_t function = 0;
    std::string modelName;
    std::uint32_t deviceCategory = 0;
    std::string terminalName;
    std::uint32_t linkWidthPerLabel = 0;    // 0: the model gives none
    std::vector<tPortEntry> ports;          // in label order
    std::uint32_t walkValue = kNoWalkValue; // bus of the upstream port's bridge
};

} // namespace nZoTavManagerPciPlugin_15_0
