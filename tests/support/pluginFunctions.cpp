#include "tests/support/pluginFunctions.h"

#include <stdexcept>
#include <type_traits>

namespace testsupport {

void PluginFunctions::load(platform::DynamicLibrary& library, const std::string& file) {
    const auto failUnless = [&](bool condition) {
        if (!condition)
            throw std::runtime_error(file + ": " + library.failureText());
    };
    failUnless(library.load(file.c_str()));
    const auto bind = [&](auto& function, const char* name) {
        function =
            reinterpret_cast<std::remove_reference_t<decltype(function)>>(library.symbol(name));
        failUnless(function != nullptr);
    };
    bind(initialize, "tavPlugin_initialize");
    bind(finalize, "tavPlugin_finalize");
    bind(getDeviceCount, "tavPlugin_getDeviceCount");
    bind(getDeviceAttributeI32, "tavPlugin_getDeviceAttributeI32");
    bind(getDeviceAttributeUTF8, "tavPlugin_getDeviceAttributeUTF8");
}

} // namespace testsupport
