// The built plug-in, loaded as a host loads it.
#pragma once

#include "platform/dynamicLibrary.h"
#include "tests/support/pluginFunctions.h"

#include <cstdint>

namespace bench {

class Plugin : public testsupport::PluginFunctions {
public:
    // Loads the plug-in of this build. Raises std::runtime_error.
    Plugin();

    // Both raise std::runtime_error when the plug-in reports a failure.
    void initializeOrThrow() const;
    [[nodiscard]] std::uint32_t deviceCount() const;

private:
    platform::DynamicLibrary library_;
};

} // namespace bench
