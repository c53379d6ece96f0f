// A tree of devices, as far as slot paths are derived from it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace platform {

// A place in the tree, as the system numbers it; good as long as the DeviceTree that gave it.
using DeviceNode = std::uint64_t;

// Every query answers false on failure and leaves its output untouched. Tests put their own tree
// behind it.
class DeviceTree {
public:
    virtual ~DeviceTree() = default;

    // The name of the bus that a device was found by: "PCI", "ACPI" and so on; at most
    // `capacity` - 1 characters, and a failure when it is longer.
    virtual bool enumeratorName(DeviceNode node, char* buffer, std::size_t capacity) = 0;

    // Device number in the high, function number in the low 16 bits.
    virtual bool address(DeviceNode node, std::uint32_t& value) = 0;

    virtual bool parent(DeviceNode node, DeviceNode& result) = 0;
    virtual bool firstChild(DeviceNode node, DeviceNode& result) = 0;
    virtual bool nextSibling(DeviceNode node, DeviceNode& result) = 0;

    // The device's identifier as text, and the node of the device of an identifier.
    virtual bool identifier(DeviceNode node, char* buffer, std::size_t capacity) = 0;
    virtual bool open(const char* identifier, DeviceNode& result) = 0;
};

} // namespace platform
