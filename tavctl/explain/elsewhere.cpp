#include "tavctl/explain/elsewhere.h"

#include "tavctl/bus/busAddress.h"

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

Elsewhere::Elsewhere(const WholeBus& bus) {
    for (const DomainBus& domain : bus.domains) {
        if (domain.number() == 0)
            continue;
        for (const pcibus::PciFunction& function : domain.bus().functions())
            functions_.emplace_back(domain.number(), function);
    }
}

std::vector<std::string> Elsewhere::anchorsOf(const tModelDescription& model) const {
    std::vector<std::string> addresses;
    for (const auto& [domain, function] : functions_) {
        if (isAnchor(model, function))
            addresses.push_back(fullAddress(domain, function));
    }
    std::sort(addresses.begin(), addresses.end());
    return addresses;
}

} // namespace tavctl::explain
