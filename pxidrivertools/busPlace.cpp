#include "pxidrivertools/busPlace.h"

#include "pcibus/position.h"

#include <cstdint>
#include <vector>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

const pcibus::PciFunction* functionAt(const pcibus::Bus& bus, const cSlotPath& path) {
    const std::vector<std::uint8_t> hops(path.hops.begin(), path.hops.end());
    return pcibus::functionAt(bus, path.rootBus, hops);
}

void setSlotPath(cSlotPath& path, const pcibus::Bus& bus, const pcibus::PciFunction& function) {
    const pcibus::Position position = pcibus::positionOf(bus, function);
    path.rootBus = position.rootBus;
    path.hops.assign(position.hops().begin(), position.hops().end());
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
