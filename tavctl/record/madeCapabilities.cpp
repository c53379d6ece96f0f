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

// Identifier, next, version 2; the link capabilities stand at 0x0C.
Capability expressCapability(const pcibus::PciFunction& bridge) {
    Capability capability(0x14, 0);
    capability[0] = kExpressCapability;
    capability[2] = 2;
    const unsigned link = (bridge.linkSpeed & 0x0FU) | (bridge.linkWidth & 0x3FU) << 4U;
    capability[0x0C] = low(link);
    capability[0x0D] = low(link >> 8U);
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

std::vector<Capability> capabilitiesOf(const pcibus::PciFunction& bridge) {
    std::vector<Capability> capabilities;
    if (bridge.linkWidth != 0 || bridge.linkSpeed != 0)
        capabilities.push_back(expressCapability(bridge));
    if (bridge.subsystemVendorId != 0 || bridge.subsystemId != 0)
        capabilities.push_back(subsystemCapability(bridge));
    return capabilities;
}

} // namespace

std::pair<std::size_t, std::size_t> makeCapabilities(const pcibus::PciFunction& bridge,
                                                     std::vector<std::uint8_t>& bytes) {
    bytes.resize(pcibus::kHeaderSize);
    const std::vector<Capability> capabilities = capabilitiesOf(bridge);
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
