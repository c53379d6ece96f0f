#include "tavctl/bus/portTypes.h"

#include "pcibus/configSpace.h"

#include <algorithm>
#include <bitset>
#include <cstddef>

namespace tavctl {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kFirstCapability = 0x34;
constexpr std::uint8_t kExpressCapability = 0x10;
constexpr std::size_t kExpressFlags = 2; // the type of the port in bits 4 to 7
constexpr unsigned kRootPort = 4;
constexpr unsigned kUpstreamPort = 5;
constexpr unsigned kDownstreamPort = 6;

// 0 when there is none.
std::size_t expressCapability(Bytes bytes) {
    std::bitset<pcibus::kStandardSize> visited;
    std::size_t at = bytes[kFirstCapability] & 0xFCU;
    while (at >= pcibus::kHeaderSize && at + kExpressFlags < bytes.size() && !visited[at]) {
        if (bytes[at] == kExpressCapability)
            return at;
        visited.set(at);
        at = bytes[at + 1] & 0xFCU;
    }
    return 0;
}

PortType typeIn(Bytes bytes) {
    if (!pcibus::saysCapabilities(bytes))
        return PortType::other;
    if (bytes.size() < pcibus::kStandardSize)
        return PortType::unknown;
    const std::size_t at = expressCapability(bytes.first(pcibus::kStandardSize));
    if (at == 0)
        return PortType::other;
    switch (bytes[at + kExpressFlags] >> 4U) {
    case kRootPort:
        return PortType::root;
    case kUpstreamPort:
        return PortType::upstream;
    case kDownstreamPort:
        return PortType::downstream;
    default:
        return PortType::other;
    }
}

} // namespace

void PortTypes::add(const pcibus::SeenFunction& seen) {
    const PortType type =
        seen.domain == 0 && seen.function.isBridge() ? typeIn(seen.bytes) : PortType::unknown;
    if (type != PortType::unknown)
        byHandle_.emplace(seen.function.handle(), type);
}

PortType PortTypes::of(const pcibus::Bus& bus, const pcibus::PciFunction& bridge) const {
    const pcibus::PciFunction* const above = bus.parentOfBus(bridge.bus);
    if (const auto known = byHandle_.find(bridge.handle()); known != byHandle_.end())
        return known->second == PortType::root && above != nullptr ? PortType::other
                                                                   : known->second;
    if (bridge.linkWidth == 0)
        return PortType::unknown;
    if (above == nullptr)
        return PortType::root;
    switch (of(bus, *above)) {
    case PortType::root:
    case PortType::downstream: {
        // That of a card that leads to conventional buses has no links below it.
        const auto children = bus.childrenOf(bridge);
        const bool leadsToPorts =
            std::any_of(children.begin(), children.end(),
                        [&](std::uint32_t child) { return bus.findBridge(child)->linkWidth != 0; });
        return leadsToPorts ? PortType::upstream : PortType::unknown;
    }
    case PortType::upstream:
        return PortType::downstream;
    default:
        return PortType::unknown;
    }
}

} // namespace tavctl
