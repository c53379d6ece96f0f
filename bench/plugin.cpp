#include "bench/plugin.h"

#include "bench/require.h"
#include "include/tavPlugin.h"

#include <string>

namespace bench {

Plugin::Plugin() {
    load(library_, TAV_BENCH_PLUGIN);
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
