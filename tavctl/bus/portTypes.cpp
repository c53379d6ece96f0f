#include "tavctl/bus/portTypes.h"

#include <algorithm>
#include <optional>
#include <vector>

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

// Nothing where that depends on what the bridge above is.
std::optional<PortType> typeByItself(const DomainBus& domain, const PciFunction& bridge) {
    const pcibus::Link& link = domain.linkOf(bridge);
    const bool isOnRootBus = domain.bus().parentOfBus(bridge.bus) == nullptr;
    const bool isMisplaced = link.port == PortType::rootPort && !isOnRootBus;
    if (link.port != PortType::unknown && !isMisplaced)
        return link.port;
    if (!link.isKnown())
        return PortType::unknown;
    if (isOnRootBus)
        return PortType::rootPort;
    return std::nullopt;
}

PortType typeBelow(PortType above, const DomainBus& domain, const PciFunction& bridge) {
    switch (above) {
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

} // namespace

PortType portTypeOf(const DomainBus& domain, const PciFunction& bridge) {
    std::vector<const PciFunction*> undecided; // upwards
    const PciFunction* at = &bridge;
    std::optional<PortType> type = typeByItself(domain, *at);
    for (; !type; type = typeByItself(domain, *at)) {
        undecided.push_back(at);
        at = domain.bus().parentOfBus(at->bus);
    }
    for (; !undecided.empty(); undecided.pop_back())
        type = typeBelow(*type, domain, *undecided.back());
    return *type;
}

} // namespace tavctl
