// The tree of devices as far as PCI goes: the machine, its root bridges in ascending order of their
// buses, and the functions below them in ascending order of their addresses. Private to this
// folder.
//
// Identifiers:  "PCI\0000:00:1c.0"  a function
//               "ACPI\PNP0A08\40"   the root bridge of bus 0x40, by the identifier that the
//               firmware
//                                   gives it
//               "BUS\PCI\40"        a root bridge that the firmware says nothing of, as in any dump
//               "MACHINE\0"         what the root bridges belong to
// A device's enumerator is what stands before the first backslash.
#pragma once

#include "platform/bus/machineBus.h"
#include "platform/deviceTree.h"

#include <map>
#include <memory>
#include <string>

namespace platform {

class BusTree : public DeviceTree {
public:
    // Null makes a tree without devices. Raises std::bad_alloc.
    explicit BusTree(std::shared_ptr<const MachineBus> machine);

    static DeviceNode nodeOf(const pcibus::PciFunction& function);
    static std::string identifierOf(const pcibus::PciFunction& function);

    bool enumeratorName(DeviceNode node, char* buffer, std::size_t capacity) override;
    bool address(DeviceNode node, std::uint32_t& value) override;
    bool parent(DeviceNode node, DeviceNode& result) override;
    bool firstChild(DeviceNode node, DeviceNode& result) override;
    bool nextSibling(DeviceNode node, DeviceNode& result) override;
    bool identifier(DeviceNode node, char* buffer, std::size_t capacity) override;
    bool open(const char* identifier, DeviceNode& result) override;

private:
    [[nodiscard]] const pcibus::PciFunction* functionOf(DeviceNode node) const;
    [[nodiscard]] std::string identifierOf(DeviceNode node) const; // empty: no such device

    std::shared_ptr<const MachineBus> machine_;
    std::map<DeviceNode, std::string> others_; // identifiers of what is no function
};

} // namespace platform
