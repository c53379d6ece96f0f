// The tree of devices as the configuration manager knows it. Private to this folder.
#pragma once

#include "platform/deviceTree.h"
#include "platform/windows/deviceInfoList.h"

#include <unordered_map>

namespace platform {

// A node is the configuration manager's number of a device instance. Properties are read through a
// list of devices, so a node must be one of the list's, or have been opened.
class SetupDeviceTree : public DeviceTree {
public:
    // The list stays its owner's, and must outlive the tree.
    explicit SetupDeviceTree(HDEVINFO list) noexcept : list_(list) {}

    // Makes a device of the list a node of the tree. Raises std::bad_alloc.
    DeviceNode add(const SP_DEVINFO_DATA& device);

    bool enumeratorName(DeviceNode node, char* buffer, std::size_t capacity) override;
    bool address(DeviceNode node, std::uint32_t& value) override;
    bool parent(DeviceNode node, DeviceNode& result) override;
    bool firstChild(DeviceNode node, DeviceNode& result) override;
    bool nextSibling(DeviceNode node, DeviceNode& result) override;
    bool identifier(DeviceNode node, char* buffer, std::size_t capacity) override;
    bool open(const char* identifier, DeviceNode& result) override;

private:
    bool property(DeviceNode node, DWORD number, void* buffer, std::size_t capacity);

    HDEVINFO list_;
    std::unordered_map<DeviceNode, SP_DEVINFO_DATA> devices_;
};

} // namespace platform
