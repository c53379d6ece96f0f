// The built plug-in, loaded as a host loads it.
#pragma once

#include "include/tavPlugin.h"
#include "platform/dynamicLibrary.h"

#include <cstdint>

namespace bench {

class Plugin {
public:
    // Loads the plug-in of this build. Raises std::runtime_error.
    Plugin();

    decltype(&tavPlugin_initialize) initialize = nullptr;
    decltype(&tavPlugin_finalize) finalize = nullptr;
    decltype(&tavPlugin_getDeviceCount) getDeviceCount = nullptr;
    decltype(&tavPlugin_getDeviceAttributeI32) getDeviceAttributeI32 = nullptr;
    decltype(&tavPlugin_getDeviceAttributeUTF8) getDeviceAttributeUTF8 = nullptr;

    // Both raise std::runtime_error when the plug-in reports a failure.
    void initializeOrThrow() const;
    [[nodiscard]] std::uint32_t deviceCount() const;

private:
    platform::DynamicLibrary library_;
};

} // namespace bench
