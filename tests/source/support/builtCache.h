// Caches for tests of the queries: built over nothing, then given records.
#pragma once

#include "tests/source/support/cacheBuild.h"

#include <utility>
#include <vector>

namespace testsupport {

inline nZoTavManagerPciPlugin_15_0::cPciTavPluginCache
builtCache(std::vector<nZoTavManagerPciPlugin_15_0::tDeviceRecord> records) {
    const BusBuilder nothing;
    CacheBuild build(nothing, {});
    build.build();
    if (!build.cache.IsBuilt() || build.cache.Count() != 0)
        throw std::logic_error("an empty build is no empty cache");
    for (auto& record : records)
        build.cache.Append(std::move(record));
    return std::move(build.cache);
}

} // namespace testsupport
