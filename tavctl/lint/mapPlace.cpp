#include "tavctl/lint/mapPlace.h"

#include "pxidrivertools/cSlotPath.h"

#include <algorithm>

namespace tavctl::lint {

namespace {

// Device 31 function 7, which hardly any hop is; and more of them than buses can be nested.
constexpr std::uint8_t kStandInHop = 0xFF;
constexpr std::ptrdiff_t kDeepest = 256;

} // namespace

std::optional<MapPlace> placeOfMap(std::string_view map) {
    // As many as the map can take away, and one that is left.
    const auto depth =
        std::min<std::ptrdiff_t>(kDeepest, std::count(map.begin(), map.end(), '-') + 1);
    nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cSlotPath path;
    path.hops.assign(static_cast<std::size_t>(depth), kStandInHop);
    nZOQUIL000::tErrorStatus status;
    path.ApplyRelativePath(map, status);
    if (status.failed())
        return std::nullopt;
    MapPlace place{static_cast<std::ptrdiff_t>(path.hops.size()) - depth,
                   {path.hops.begin(), path.hops.end()}};
    while (!place.hops.empty() && place.hops.back() == kStandInHop)
        place.hops.pop_back();
    return place;
}

} // namespace tavctl::lint
