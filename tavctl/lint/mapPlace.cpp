#include "tavctl/lint/mapPlace.h"

#include "pxidrivertools/cSlotPath.h"

namespace tavctl::lint {

namespace {

// Device 31 function 7, which hardly any hop is; and more of them than buses can be nested.
constexpr std::uint8_t kStandInHop = 0xFF;
constexpr std::size_t kDeepest = 256;

} // namespace

std::optional<MapPlace> placeOfMap(std::string_view map) {
    nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cSlotPath path;
    path.hops.assign(kDeepest, kStandInHop);
    nZOQUIL000::tErrorStatus status;
    path.ApplyRelativePath(map, status);
    if (status.failed())
        return std::nullopt;
    return path.hops;
}

} // namespace tavctl::lint
