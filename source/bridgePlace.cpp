#include "source/bridgePlace.h"

#include "quil/zoerr.h"

namespace nZoTavManagerPciPlugin_15_0 {

std::uint32_t findDescribedBridge(const nZoPxiDriverTools_1_0::cSlotPath& anchor,
                                  const std::string& traversalMap,
                                  nZoPciBrdWrapper_15_0::iPciBrdWrapper_ex& bridgeWrapper) {
    nZoPxiDriverTools_1_0::cSlotPath place(anchor);
    nZOQUIL000::tErrorStatus status;
    place.ApplyRelativePath(traversalMap, status);
    zoerr::raiseIfFailed(status);
    std::uint32_t bridge = nZoPciBrdWrapper_15_0::kNoHandle;
    bridgeWrapper.FindBridgeBySlotPath(place, bridge);
    return bridge;
}

} // namespace nZoTavManagerPciPlugin_15_0
