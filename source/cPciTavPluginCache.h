// The list of devices that the plug-in reports, and the queries on it. Built once by
// tavPlugin_initialize; nothing but plain records outlives the build. Used from one thread at a
// time.
#pragma once

#include "pciBrdWrapper/iPciBrdWrapper_ex.h"
#include "quil/iQUILDeviceFinder.h"
#include "source/cTerminalNameDb.h"
#include "source/deviceRecord.h"
#include "source/iPciModelInfoDb.h"
#include "source/iPciTavFilesystem.h"
#include "source/matchObserver.h"

#include <cstdint>
#include <vector>

namespace nZoTavManagerPciPlugin_15_0 {

class cPciTavPluginCache {
public:
    using iPciBrdWrapper_ex = nZoPciBrdWrapper_15_0::iPciBrdWrapper_ex;

    // Fills the records: names, descriptions and the bridge session are opened, every model's
    // anchors are found and walked, new names are saved. A model that fails is left out from there
    // on. The observer hears of each condition that is tested. Does nothing when the cache is
    // built. Raises what opening, loading or saving raises; the cache is then not built and its
    // owner gives it up.
    void Build(iQUILDeviceFinder& deviceFinder, iPciBrdWrapper_ex& bridgeWrapper,
               iPciTavFilesystem& filesystem, cTerminalNameDb& terminalNames,
               iPciModelInfoDb& models, MatchObserver& observer = noObserver());

    // Forgets every record; the cache can be built again.
    void Clear() noexcept;

    [[nodiscard]] bool IsBuilt() const noexcept { return built != 0; }
    [[nodiscard]] std::uint32_t Count() const noexcept {
        return static_cast<std::uint32_t>(records.size());
    }

    // Raises std::out_of_range for an index that is not below Count().
    [[nodiscard]] const tDeviceRecord& RecordAt(std::uint32_t index) const {
        return records.at(index);
    }

    void Append(tDeviceRecord record);

    // Read one attribute of one device; include/tavPlugin.h lists them. Raise zoerr::Exception, or
    // std::out_of_range for a device or element that is not there. The text buffer must hold
    // TAVPLUGIN_TEXT_SIZE bytes.
    void GetAttributeI32(std::uint32_t index, std::uint32_t attribute, std::int32_t* value) const;
    void GetAttributeUTF8(std::uint32_t index, std::uint32_t attribute, char* buffer) const;

    // The same, but an attribute that the device does not carry is the result
    // kTavManErrAttributeNotSupported and nothing is raised; kTavManSuccess otherwise.
    std::int32_t FindAttributeI32(std::uint32_t index, std::uint32_t attribute,
                                  std::int32_t* value) const;
    std::int32_t FindAttributeUTF8(std::uint32_t index, std::uint32_t attribute,
                                   char* buffer) const;

private:
    std::uint8_t built = 0;
    std::vector<tDeviceRecord> records;
};

} // namespace nZoTavManagerPciPlugin_15_0
