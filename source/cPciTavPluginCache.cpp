#include "source/cPciTavPluginCache.h"

#include "quil/zoerr.h"
#include "source/anchorSearch.h"
#include "source/topologyWalk.h"

#include <exception>
#include <utility>

namespace nZoTavManagerPciPlugin_15_0 {

namespace {

using nZoPciBrdWrapper_15_0::iPciBrdWrapper_ex;
using nZoPciBrdWrapper_15_0::kNoHandle;
using nZoPxiDriverTools_1_0::cSlotPath;

constexpr std::uint32_t kSessionOpenOption = 0;

// The slot path of a function: that of the bridge above it and one hop more.
cSlotPath slotPathOfDevice(const tBusAddress& address, iPciBrdWrapper_ex& bridgeWrapper) {
    std::uint32_t parent = kNoHandle;
    bridgeWrapper.FindParentBridgeForBus(address.bus, parent);
    cSlotPath slotPath;
    bridgeWrapper.GetBridgeSlotPath(parent, slotPath);
    nZOQUIL000::tErrorStatus status;
    slotPath.PrependHop(address.device, address.function, status);
    zoerr::raiseIfFailed(status);
    return slotPath;
}

// Finds anchors that are no bridges. The pass over the addresses starts at the first one again for
// every anchor of the model, so with two such anchors the slot paths of the first anchor's devices
// stand twice in the list; address and slot path of one number are what the walk goes by.
void addDeviceAnchors(const tAnchorIdentity& anchor, iQUILDeviceFinder& deviceFinder,
                      iPciBrdWrapper_ex& bridgeWrapper, FoundAnchors& found,
                      MatchObserver& observer) {
    deviceFinder.FindByPciIds(anchor.ids, found.addresses);
    for (const tBusAddress& address : found.addresses) {
        observer.onDeviceAnchor(address);
        found.slotPaths.push_back(slotPathOfDevice(address, bridgeWrapper));
        observer.onDeviceAnchorPlaced(address, found.slotPaths.back());
    }
}

// One build: the collaborators it works with, and whether any walk has come to its end.
class DeviceListBuild {
public:
    DeviceListBuild(cPciTavPluginCache& cache, iQUILDeviceFinder& deviceFinder,
                    iPciBrdWrapper_ex& bridgeWrapper, cTerminalNameDb& terminalNames,
                    const iPciModelInfoDb& models, MatchObserver& observer)
        : cache_(cache), deviceFinder_(deviceFinder), bridgeWrapper_(bridgeWrapper),
          terminalNames_(terminalNames), models_(models), observer_(observer) {}

    // A model that cannot be read from the bus is left out from there on; its records so far stay.
    void addModel(std::uint32_t modelIndex) {
        observer_.onModel(modelIndex);
        try {
            const FoundAnchors found = findAnchors(modelIndex);
            for (std::size_t i = 0; i < found.addresses.size(); ++i) {
                cache_.Append(walkTopology(found.addresses[i], found.slotPaths.at(i),
                                           terminalNames_, bridgeWrapper_, models_, modelIndex,
                                           observer_));
                foundAny_ = true;
            }
        } catch (const std::exception& exception) {
            observer_.onModelFailed(exception);
        }
    }

    [[nodiscard]] bool foundAny() const { return foundAny_; }

private:
    FoundAnchors findAnchors(std::uint32_t modelIndex) {
        std::vector<tAnchorIdentity> anchors;
        models_.GetAnchors(modelIndex, anchors);
        FoundAnchors found;
        for (const tAnchorIdentity& anchor : anchors) {
            observer_.onAnchor(anchor);
            if (anchor.headerType == kHeaderTypeBridge)
                searchAnchors(anchor, models_, modelIndex, bridgeWrapper_, found, observer_);
            else
                addDeviceAnchors(anchor, deviceFinder_, bridgeWrapper_, found, observer_);
        }
        return found;
    }

    cPciTavPluginCache& cache_;
    iQUILDeviceFinder& deviceFinder_;
    iPciBrdWrapper_ex& bridgeWrapper_;
    cTerminalNameDb& terminalNames_;
    const iPciModelInfoDb& models_;
    MatchObserver& observer_;
    bool foundAny_ = false;
};

} // namespace

void cPciTavPluginCache::Build(iQUILDeviceFinder& deviceFinder, iPciBrdWrapper_ex& bridgeWrapper,
                               iPciTavFilesystem& filesystem, cTerminalNameDb& terminalNames,
                               iPciModelInfoDb& models, MatchObserver& observer) {
    if (built)
        return;
    terminalNames.Load();
    models.LoadDescriptions(filesystem);
    bridgeWrapper.OpenSession(kSessionOpenOption);
    DeviceListBuild build(*this, deviceFinder, bridgeWrapper, terminalNames, models, observer);
    for (std::uint32_t model = 0; model < models.GetModelCount(); ++model)
        build.addModel(model);
    bridgeWrapper.CloseSession();
    if (build.foundAny())
        terminalNames.Save();
    terminalNames.Close();
    built = 1;
}

void cPciTavPluginCache::Clear() noexcept {
    records.clear();
    built = 0;
}

void cPciTavPluginCache::Append(tDeviceRecord record) {
    records.push_back(std::move(record));
}

} // namespace nZoTavManagerPciPlugin_15_0
