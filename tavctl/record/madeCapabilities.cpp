#include "tavctl/record/madeCapabilities.h"

#include "pcibus/configSpace.h"

#include <algorithm>

namespace tavctl {

namespace {

constexpr std::size_t kStandardSize = 256;
constexpr std::size_t kStatus = 0x06;
constexpr unsigned kStatusHasCapabilities = 1U << 4;
constexpr std::size_t kFirstCapability = 0x34;

constexpr std::uint8_t kSubsystemCapability = 0x0D;
constexpr std::uint8_t kExpressCapability = 0x10;

using Capability = std::vector<std::uint8_t>; // with the pointer to the next, 0, in it

std::uint8_t low(unsigned value) {
    return static_cast<std::uint8_t>(value & 0xFFU);
}

void putLink(Capability& capability, std::size_t at, unsigned width, unsigned speed) {
    const unsigned link = (speed & 0x0FU) | (width & 0x3FU) << 4U;
    capability[at] = low(link);
    capability[at + 1] = low(link >> 8U);
}

// 0, an endpoint's, for what is not known.
unsigned portTypeCode(pcibus::PortType port) {
    switch (port) {
    case pcibus::PortType::rootPort:
        return 4;
    case pcibus::PortType::upstreamPort:
        return 5;
    case pcibus::PortType::downstreamPort:
        return 6;
    case pcibus::PortType::other:
        return 7;
    case pcibus::PortType::unknown:
        break;
    }
    return 0;
}

// Identifier, next, version 2; the link capabilities stand at 0x0C, the link status at 0x12.
Capability expressCapability(const pcibus::Link& link) {
    Capability capability(0x14, 0);
    capability[0] = kExpressCapability;
    capability[2] = low(2U | portTypeCode(link.port) << 4U);
    putLink(capability, 0x0C, link.maximumWidth, link.maximumSpeed);
    putLink(capability, 0x12, link.width, link.speed);
    return capability;
}

Capability subsystemCapability(const pcibus::PciFunction& bridge) {
    return {kSubsystemCapability,
            0,
            0,
            0,
            low(bridge.subsystemVendorId),
            low(bridge.subsystemVendorId >> 8U),
            low(bridge.subsystemId),
            low(bridge.subsystemId >> 8U)};
}

std::vector<Capability> capabilitiesOf(const pcibus::PciFunction& function,
                                       const pcibus::Link& link) {
    std::vector<Capability> capabilities;
    if (link.isKnown())
        capabilities.push_back(expressCapability(link));
    if (function.isBridge() && (function.subsystemVendorId != 0 || function.subsystemId != 0))
        capabilities.push_back(subsystemCapability(function));
    return capabilities;
}

} // namespace

std::pair<std::size_t, std::size_t> makeCapabilities(const pcibus::PciFunction& function,
                                                     const pcibus::Link& link,
                                                     std::vector<std::uint8_t>& bytes) {
    bytes.resize(pcibus::kHeaderSize);
    const std::vector<Capability> capabilities = capabilitiesOf(function, link);
    if (capabilities.empty())
        return {0, 0};
    bytes.resize(kStandardSize, 0);

    std::size_t at = bytes[kFirstCapability] & 0xFCU;
    if ((bytes[kStatus] & kStatusHasCapabilities) == 0 || at < pcibus::kHeaderSize) {
        at = pcibus::kHeaderSize;
        bytes[kStatus] = static_cast<std::uint8_t>(bytes[kStatus] | kStatusHasCapabilities);
        bytes[kFirstCapability] = low(static_cast<unsigned>(at));
    }
    std::size_t begin = at;
    std::size_t end = at;
    std::size_t pointer = kFirstCapability; // which leads to `at`
    for (const Capability& capability : capabilities) {
        if (at + capability.size() > kStandardSize) {
            // No room behind the place that the header names: from the front, over a capability
            // without meaning if the header's pointer would lead nowhere.
            if (pointer == kFirstCapability) {
                begin = at;
                end = at + 2;
                pointer = at + 1;
            }
            at = pcibus::kHeaderSize;
        }
        bytes[pointer] = low(static_cast<unsigned>(at));
        std::copy(capability.begin(), capability.end(),
                  bytes.begin() + static_cast<std::ptrdiff_t>(at));
        pointer = at + 1;
        begin = std::min(begin, at);
        end = std::max(end, at + capability.size());
        at += capability.size();
    }
    return {begin, end};
}

} // namespace tavctl
