// The tree of devices as far as PCI goes: the machine, its root bridges in ascending order of their
// buses, and the functions below them in ascending order of their addresses.
//
// Identifiers:  "PCI\0000:00:1c.0"  a function
//               "ACPI\PNP0A08\40"   the root bridge of bus 0x40, as the firmware identifies it
//               "BUS\PCI\40"        a root bridge that the firmware says nothing of, as in any dump
//               "MACHINE\0"         what the root bridges belong to
// A device's enumerator is what stands before the first backslash.
#pragma once

#include "machine/machineBus.h"
#include "platform/deviceTree.h"

#include <map>
#include <memory>
#include <string>

namespace machine {

class BusTree : public platform::DeviceTree {
public:
    // Null makes a tree without devices. Raises std::bad_alloc.
    explicit BusTree(std::shared_ptr<const MachineBus> machine);

    static platform::DeviceNode nodeOf(const pcibus::PciFunction& function);

    bool enumeratorName(platform::DeviceNode node, char* buffer, std::size_t capacity) override;
    bool address(platform::DeviceNode node, std::uint32_t& value) override;
    bool parent(platform::DeviceNode node, platform::DeviceNode& result) override;
    bool firstChild(platform::DeviceNode node, platform::DeviceNode& result) override;
    bool nextSibling(platform::DeviceNode node, platform::DeviceNode& result) override;
    bool identifier(platform::DeviceNode node, char* buffer, std::size_t capacity) override;
    bool open(const char* identifier, platform::DeviceNode& result) override;

private:
    [[nodiscard]] const pcibus::PciFunction* functionOf(platform::DeviceNode node) const;
    [[nodiscard]] std::string
    identifierOf(platform::DeviceNode node) const; // empty: no such device

    std::shared_ptr<const MachineBus> machine_;
    std::map<platform::DeviceNode, std::string> others_; // identifiers of what is no function
};

} // namespace machine
