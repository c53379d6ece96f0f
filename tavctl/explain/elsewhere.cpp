#include "tavctl/explain/elsewhere.h"

#include "pcibus/readBus.h"
#include "platform/busLocation.h"
#include "platform/utf8Path.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdint>

namespace tavctl::explain {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;

bool isAnchor(const tModelDescription& model, const pcibus::PciFunction& function) {
    return std::any_of(model.anchors.begin(), model.anchors.end(), [&](const auto& anchor) {
        return (anchor.headerType == kHeaderTypeBridge) == function.isBridge() &&
               anchor.ids.vendor == function.vendorId && anchor.ids.device == function.deviceId &&
               anchor.ids.subsystemVendor == function.subsystemVendorId &&
               anchor.ids.subsystem == function.subsystemId;
    });
}

} // namespace

Elsewhere Elsewhere::ofChosenBus() {
    Elsewhere elsewhere;
    const auto location = platform::busLocation();
    if (!location)
        return elsewhere;
    const auto look = [&](const pcibus::SeenFunction& seen) {
        if (seen.domain != 0)
            elsewhere.functions_.emplace_back(seen.domain, seen.function);
    };
    try {
        pcibus::readBus(platform::utf8Path(*location), nullptr, look);
    } catch (const pcibus::BusError&) { // NOLINT(bugprone-empty-catch): it was read before
    }
    return elsewhere;
}

std::vector<std::string> Elsewhere::anchorsOf(const tModelDescription& model) const {
    std::vector<std::string> addresses;
    for (const auto& [domain, function] : functions_) {
        if (isAnchor(model, function))
            addresses.push_back(fmt::format("{:04x}:{}", domain, pcibus::addressText(function)));
    }
    std::sort(addresses.begin(), addresses.end());
    return addresses;
}

} // namespace tavctl::explain
