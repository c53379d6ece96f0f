// The five exported functions and the one device cache that they share.
#include "include/tavPlugin.h"

#include "pciBrdWrapper/cPciBrdWrapper_ex.h"
#include "platform/pause.h"
#include "pxidrivertools/cIniFile.h"
#include "quil/cQUILDeviceFinder.h"
#include "source/cPciModelInfoDb.h"
#include "source/cPciTavFilesystem.h"
#include "source/cPciTavPluginCache.h"
#include "source/cTerminalNameDb.h"
#include "source/exceptionStatus.h"
#include "source/tavStatus.h"

#include <atomic>
#include <chrono>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;

// Null while there is no list of devices. Plain, without a lock: the host calls from one thread at
// a time.
cPciTavPluginCache* pluginCache = nullptr;

cPciTavPluginCache& getCache() {
    if (!pluginCache)
        raiseSoftwareFault("source\\cPciTavPluginCache");
    return *pluginCache;
}

void destroyCache() noexcept {
    delete pluginCache;
    pluginCache = nullptr;
}

// How many calls of the host's there are, and whether the library gives up what it has.
std::atomic<unsigned> use = 0;
constexpr unsigned kGivingUp = 1U << 31;

class Call {
public:
    Call() noexcept {
        if ((use.fetch_add(1) & kGivingUp) == 0)
            return;
        while ((use.load() & kGivingUp) != 0)
            platform::pause(std::chrono::milliseconds(1));
    }
    ~Call() { use.fetch_sub(1); }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;
};

// When the library is unloaded, by a host that has not finalised it, or the process ends (on
// Windows a library leaves everything to the system then). A process may end while another thread
// of it calls: nothing is taken from under a call, and one that comes meanwhile or even later finds
// no list, or makes a new one.
struct AtUnload {
    ~AtUnload() {
        unsigned none = 0;
        if (!use.compare_exchange_strong(none, kGivingUp))
            return;
        destroyCache();
        releaseModelDatabase();
        use.fetch_sub(kGivingUp);
    }
};
const AtUnload atUnload;

// Everything that a build works with lives on this function's stack and is gone when it returns:
// the bridge library is loaded only meanwhile, and the lock is held only meanwhile.
void buildCache() {
    nZOQUIL000::tErrorStatus status;
    nZoPciBrdWrapper_15_0::cPciBrdWrapper_ex bridgeWrapper(status);
    zoerr::raiseIfFailed(status);
    cQUILDeviceFinder deviceFinder([&] { return bridgeWrapper.SessionFunctions(); });
    cPciTavFilesystem filesystem;
    nZoPxiDriverTools_1_0::cIniFile iniFile;
    cTerminalNameDb terminalNames(filesystem, iniFile);
    if (!pluginCache)
        pluginCache = new cPciTavPluginCache;
    pluginCache->Build(deviceFinder, bridgeWrapper, filesystem, terminalNames, modelDatabase());
}

// Runs the body of an export, which gives a status or raises one; no exception leaves it.
template <typename Body>
std::int32_t guarded(Body body) noexcept {
    const Call call;
    try {
        return body();
    } catch (...) {
        return statusOfCurrentException();
    }
}

} // namespace

std::int32_t TAVPLUGIN_CALL tavPlugin_initialize() {
    const std::int32_t status = guarded([] {
        const zoerr::HostCall hostCall;
        buildCache();
        return kTavManSuccess;
    });
    if (status != kTavManSuccess)
        destroyCache();
    return status;
}

void TAVPLUGIN_CALL tavPlugin_finalize() {
    const Call call;
    destroyCache();
}

std::int32_t TAVPLUGIN_CALL tavPlugin_getDeviceCount(std::uint32_t* count) {
    if (!count)
        return kTavManErrInvalidParam;
    return guarded([&] {
        *count = getCache().Count();
        return kTavManSuccess;
    });
}

std::int32_t TAVPLUGIN_CALL tavPlugin_getDeviceAttributeI32(std::uint32_t index,
                                                            std::uint32_t attribute,
                                                            std::int32_t* value) {
    return guarded([&] { return getCache().FindAttributeI32(index, attribute, value); });
}

std::int32_t TAVPLUGIN_CALL tavPlugin_getDeviceAttributeUTF8(std::uint32_t index,
                                                             std::uint32_t attribute,
                                                             char* buffer) {
    return guarded([&] { return getCache().FindAttributeUTF8(index, attribute, buffer); });
}
