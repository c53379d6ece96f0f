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

void findElsewhere(const Descriptions& descriptions, std::vector<Explanation>& explanations) {
    const auto location = platform::busLocation();
    if (!location)
        return;
    const auto look = [&](std::uint32_t domain, const pcibus::PciFunction& function, auto) {
        if (domain == 0)
            return;
        for (std::size_t i = 0; i < descriptions.size(); ++i) {
            if (isAnchor(descriptions[i]->model(), function))
                explanations[i].elsewhere.push_back(
                    fmt::format("{:04x}:{}", domain, pcibus::addressText(function)));
        }
    };
    try {
        pcibus::readBus(platform::utf8Path(*location), nullptr, look);
    } catch (const pcibus::BusError&) { // NOLINT(bugprone-empty-catch): it was read before
    }
    for (Explanation& each : explanations)
        std::sort(each.elsewhere.begin(), each.elsewhere.end());
}

} // namespace tavctl::explain
