#include "tavctl/bus/portTypes.h"

#include <algorithm>

namespace tavctl {

namespace {

using pcibus::PciFunction;
using pcibus::PortType;

// A bridge to conventional buses has none.
bool leadsToLinks(const DomainBus& domain, const PciFunction& bridge) {
    const auto children = domain.bus().childrenOf(bridge);
    return std::any_of(children.begin(), children.end(), [&](std::uint32_t child) {
        return domain.linkOf(*domain.bus().find(child)).isKnown();
    });
}

} // namespace

PortType portTypeOf(const DomainBus& domain, const PciFunction& bridge) {
    const pcibus::Link& link = domain.linkOf(bridge);
    const PciFunction* const above = domain.bus().parentOfBus(bridge.bus);
    const bool isMisplaced = link.port == PortType::rootPort && above != nullptr;
    if (link.port != PortType::unknown && !isMisplaced)
        return link.port;
    if (!link.isKnown())
        return PortType::unknown;
    if (above == nullptr)
        return PortType::rootPort;
    switch (portTypeOf(domain, *above)) {
    case PortType::rootPort:
    case PortType::downstreamPort:
        return leadsToLinks(domain, bridge) ? PortType::upstreamPort : PortType::unknown;
    case PortType::upstreamPort:
        return PortType::downstreamPort;
    case PortType::unknown:
    case PortType::other:
        break;
    }
    return PortType::unknown;
}

} // namespace tavctl
