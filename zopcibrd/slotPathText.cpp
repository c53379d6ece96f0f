#include "zopcibrd/slotPathText.h"

#include "pxidrivertools/busPlace.h"
#include "zopcibrd/zopcibrd.h"

namespace zopcibrd {
namespace {

using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cSlotPath;

std::int32_t statusOf(const cSlotPath::tErrorStatus& status) {
    if (!status.failed())
        return 0;
    return status.code == nZOQUIL000::zoquilerr_memoryFull ? kPciBrdErrOutOfMemory
                                                           : kPciBrdErrInvalidArgument;
}

} // namespace

std::int32_t findBridgeBySlotPath(const pcibus::Bus& bus, std::string_view text,
                                  std::uint32_t& bridge) {
    cSlotPath path;
    cSlotPath::tErrorStatus status;
    path.ParseMachineText(text, status);
    if (const std::int32_t failure = statusOf(status))
        return failure;
    const pcibus::PciFunction* const found = functionAt(bus, path);
    if (found == nullptr || !found->isBridge())
        return kPciBrdErrNotFound;
    bridge = found->handle();
    return 0;
}

std::int32_t slotPathOf(const pcibus::Bus& bus, const pcibus::PciFunction& bridge,
                        std::string& text) {
    cSlotPath path;
    setSlotPath(path, bus, bridge);
    cSlotPath::tErrorStatus status;
    path.FormatMachineText(text, status);
    return statusOf(status);
}

} // namespace zopcibrd
