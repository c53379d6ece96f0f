#include "platform/windows/setupDeviceTree.h"

#include <cfgmgr32.h>

#include <cstring>
#include <string>

namespace platform {

namespace {

// No device has this number. Some systems answer success and leave the output as it was.
constexpr DEVINST kUntouched = 0xFFFFFFFF;

DEVINST instanceOf(DeviceNode node) noexcept {
    return static_cast<DEVINST>(node);
}

// Copies what the system wrote into `text`, up to its end; false when there is no end, or no text.
bool giveText(const std::string& text, char* buffer) {
    const std::size_t length = text.find('\0');
    if (length == 0 || length == std::string::npos)
        return false;
    std::memcpy(buffer, text.c_str(), length + 1);
    return true;
}

template <typename Query>
bool relative(Query query, DeviceNode node, DeviceNode& result) {
    DEVINST found = kUntouched;
    if (query(&found, instanceOf(node), 0) != CR_SUCCESS || found == kUntouched)
        return false;
    result = found;
    return true;
}

} // namespace

DeviceNode SetupDeviceTree::add(const SP_DEVINFO_DATA& device) {
    devices_.insert_or_assign(device.DevInst, device);
    return device.DevInst;
}

bool SetupDeviceTree::property(DeviceNode node, DWORD number, void* buffer, std::size_t capacity) {
    const auto device = devices_.find(node);
    DWORD needed = 0;
    return device != devices_.end() &&
           SetupDiGetDeviceRegistryPropertyA(list_, &device->second, number, nullptr,
                                             static_cast<BYTE*>(buffer),
                                             static_cast<DWORD>(capacity), &needed) &&
           needed <= capacity;
}

bool SetupDeviceTree::enumeratorName(DeviceNode node, char* buffer, std::size_t capacity) {
    std::string text(capacity, '\0');
    if (!property(node, SPDRP_ENUMERATOR_NAME, text.data(), capacity))
        return false;
    return giveText(text, buffer);
}

bool SetupDeviceTree::address(DeviceNode node, std::uint32_t& value) {
    std::uint32_t read = 0;
    if (!property(node, SPDRP_ADDRESS, &read, sizeof read))
        return false;
    value = read;
    return true;
}

bool SetupDeviceTree::parent(DeviceNode node, DeviceNode& result) {
    return relative(CM_Get_Parent, node, result);
}

bool SetupDeviceTree::firstChild(DeviceNode node, DeviceNode& result) {
    return relative(CM_Get_Child, node, result);
}

bool SetupDeviceTree::nextSibling(DeviceNode node, DeviceNode& result) {
    return relative(CM_Get_Sibling, node, result);
}

bool SetupDeviceTree::identifier(DeviceNode node, char* buffer, std::size_t capacity) {
    std::string text(capacity, '\0');
    if (CM_Get_Device_IDA(instanceOf(node), text.data(), static_cast<ULONG>(capacity), 0) !=
        CR_SUCCESS)
        return false;
    return giveText(text, buffer);
}

bool SetupDeviceTree::open(const char* identifier, DeviceNode& result) {
    SP_DEVINFO_DATA device = emptyDeviceInfo();
    if (!SetupDiOpenDeviceInfoA(list_, identifier, nullptr, 0, &device))
        return false;
    result = add(device);
    return true;
}

} // namespace platform
