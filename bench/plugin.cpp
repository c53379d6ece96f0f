#include "bench/plugin.h"

#include "bench/require.h"

#include <string>
#include <type_traits>

namespace bench {

Plugin::Plugin() {
    require(library_.load(TAV_BENCH_PLUGIN),
            std::string(TAV_BENCH_PLUGIN) + ": " + library_.failureText());
    const auto bind = [this](auto& function, const char* name) {
        function =
            reinterpret_cast<std::remove_reference_t<decltype(function)>>(library_.symbol(name));
        require(function != nullptr, std::string(TAV_BENCH_PLUGIN) + " has no " + name);
    };
    bind(initialize, "tavPlugin_initialize");
    bind(finalize, "tavPlugin_finalize");
    bind(getDeviceCount, "tavPlugin_getDeviceCount");
    bind(getDeviceAttributeI32, "tavPlugin_getDeviceAttributeI32");
    bind(getDeviceAttributeUTF8, "tavPlugin_getDeviceAttributeUTF8");
}

void Plugin::initializeOrThrow() const {
    const std::int32_t status = initialize();
    require(status == kTavManSuccess, "initialize: status " + std::to_string(status));
}

std::uint32_t Plugin::deviceCount() const {
    std::uint32_t count = 0;
    const std::int32_t status = getDeviceCount(&count);
    require(status == kTavManSuccess, "getDeviceCount: status " + std::to_string(status));
    return count;
}

} // namespace bench
