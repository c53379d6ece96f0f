// The plug-in's five functions, as a host that loads it finds them.
#pragma once

#include "include/tavPlugin.h"
#include "platform/dynamicLibrary.h"

#include <string>

namespace testsupport {

struct PluginFunctions {
    decltype(&tavPlugin_initialize) initialize = nullptr;
    decltype(&tavPlugin_finalize) finalize = nullptr;
    decltype(&tavPlugin_getDeviceCount) getDeviceCount = nullptr;
    decltype(&tavPlugin_getDeviceAttributeI32) getDeviceAttributeI32 = nullptr;
    decltype(&tavPlugin_getDeviceAttributeUTF8) getDeviceAttributeUTF8 = nullptr;

    // Loads the plug-in into `library` and takes its functions, which are there as long as it is
    // loaded. Raises std::runtime_error with the file and the reason.
    void load(platform::DynamicLibrary& library, const std::string& file);
};

} // namespace testsupport
