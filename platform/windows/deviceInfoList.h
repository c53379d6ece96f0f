// A set of device information, as the device installation functions keep it. Private to this
// folder.
#pragma once

#include "platform/windows/uniqueHandle.h"

#include <setupapi.h>

namespace platform {

struct DeviceInfoListKind {
    using Handle = HDEVINFO;
    static Handle none() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(Handle handle) noexcept { SetupDiDestroyDeviceInfoList(handle); }
};
using DeviceInfoList = UniqueHandle<DeviceInfoListKind>;

// All devices of all classes that are present; none, with GetLastError() set, on failure.
inline DeviceInfoList listPresentDevices() noexcept {
    return DeviceInfoList(
        SetupDiGetClassDevsA(nullptr, nullptr, nullptr, DIGCF_PRESENT | DIGCF_ALLCLASSES));
}

inline SP_DEVINFO_DATA emptyDeviceInfo() noexcept {
    SP_DEVINFO_DATA info = {};
    info.cbSize = sizeof info;
    return info;
}

} // namespace platform
