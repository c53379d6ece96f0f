#include "zopcibrd/slotPathText.h"

#include "pcibus/position.h"
#include "pxidrivertools/cSlotPath.h"
#include "zopcibrd/zopcibrd.h"

#include <vector>

namespace zopcibrd {
namespace {

using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cSlotPath;

std::int32_t statusOf(const cSlotPath::tErrorStatus& status) {
    if (!status.failed())
        return 0;
    return status.code == kPciBrdErrOutOfMemory ? kPciBrdErrOutOfMemory : kPciBrdErrInvalidArgument;
}

} // namespace

std::int32_t findBridgeBySlotPath(const pcibus::Bus& bus, std::string_view text,
                                  std::uint32_t& bridge) {
    cSlotPath path;
    cSlotPath::tErrorStatus status;
    path.ParseMachineText(text, status);
    if (const std::int32_t failure = statusOf(status))
        return failure;
    const std::vector<std::uint8_t> hops(path.hops.begin(), path.hops.end());
    const pcibus::PciFunction* const found = functionAt(bus, path.rootBus, hops);
    if (found == nullptr || !found->isBridge())
        return kPciBrdErrNotFound;
    bridge = found->handle();
    return 0;
}

std::int32_t slotPathOf(const pcibus::Bus& bus, const pcibus::PciFunction& bridge,
                        std::string& text) {
    const pcibus::Position position = positionOf(bus, bridge);
    cSlotPath path;
    path.rootBus = position.rootBus;
    path.hops.assign(position.hops().begin(), position.hops().end());
    cSlotPath::tErrorStatus status;
    path.FormatMachineText(text, status);
    return statusOf(status);
}

} // namespace zopcibrd
