// A device cache with everything that a build of it needs, over a bus that a test has built.
#pragma once

#include "source/cPciTavPluginCache.h"
#include "tests/source/support/busDeviceFinder.h"
#include "tests/source/support/modelTable.h"
#include "tests/source/support/nameDatabase.h"
#include "tests/source/support/raised.h"
#include "tests/source/support/recordingBridgeWrapper.h"

#include <string>
#include <utility>
#include <vector>

namespace testsupport {

// A record as "Box TAV1 at 01:00.0 ports A,B".
inline std::string describe(const nZoTavManagerPciPlugin_15_0::tDeviceRecord& record) {
    const int handle = record.bus << 8 | record.device << 3 | record.function;
    std::string text = record.modelName;
    text += ' ';
    text += record.terminalName;
    text += " at ";
    text += handleText(static_cast<std::uint32_t>(handle));
    const char* separator = " ports ";
    for (const auto& port : record.ports) {
        text += std::exchange(separator, ",");
        text += port.connectorLabel;
    }
    return text;
}

struct CacheBuild {
    NameDatabase db;
    RecordingBridgeWrapper wrapper;
    BusDeviceFinder finder;
    ModelTable models;
    nZoTavManagerPciPlugin_15_0::cPciTavPluginCache cache;

    CacheBuild(const BusBuilder& machine,
               std::vector<nZoTavManagerPciPlugin_15_0::tModelDescription> described)
        : wrapper(machine), finder(machine), models(std::move(described)) {}

    void build() { cache.Build(finder, wrapper, db.filesystem, db.names, models); }

    [[nodiscard]] std::vector<std::string> devices() const {
        std::vector<std::string> result;
        for (std::uint32_t i = 0; i < cache.Count(); ++i)
            result.push_back(describe(cache.RecordAt(i)));
        return result;
    }
};

} // namespace testsupport
