#include "pcibus/configSpace.h"

#include <bitset>

namespace pcibus {
namespace {

// Offsets in the header.
constexpr std::size_t kVendorId = 0x00;
constexpr std::size_t kDeviceId = 0x02;
constexpr std::size_t kStatus = 0x06;
constexpr std::size_t kHeaderType = 0x0E;
constexpr std::size_t kSecondaryBus = 0x19;      // header types 1 and 2
constexpr std::size_t kSubordinateBus = 0x1A;    // header types 1 and 2
constexpr std::size_t kSubsystemVendorId = 0x2C; // header type 0
constexpr std::size_t kSubsystemId = 0x2E;       // header type 0
constexpr std::size_t kFirstCapability = 0x34;

constexpr std::uint16_t kNobody = 0xFFFF; // as vendor identifier

constexpr unsigned kStatusHasCapabilities = 1U << 4;
constexpr unsigned kMultiFunction = 0x80;

// Capabilities lie behind the header, in the first 256 bytes, on multiples of four.
constexpr std::size_t kCapabilityAlignment = 4;
constexpr std::size_t kCapabilityPositions = 256 / kCapabilityAlignment;

constexpr std::uint8_t kSubsystemCapability = 0x0D;
constexpr std::size_t kSubsystemCapabilityVendorId = 4;
constexpr std::size_t kSubsystemCapabilityId = 6;

constexpr std::uint8_t kExpressCapability = 0x10;
constexpr std::size_t kExpressCapabilities = 0x02;
constexpr std::size_t kExpressLinkCapabilities = 0x0C;
constexpr std::size_t kExpressLinkStatus = 0x12;

using Bytes = std::span<const std::uint8_t>;

// 0 beyond the bytes at hand.
std::uint16_t read16(Bytes bytes, std::size_t offset) {
    if (offset + 2 > bytes.size())
        return 0;
    return static_cast<std::uint16_t>(bytes[offset] | bytes[offset + 1] << 8);
}

// Where the capabilities of interest lie; 0 for one that is not there.
struct Capabilities {
    std::size_t subsystem = 0;
    std::size_t express = 0;
};

Capabilities findCapabilities(Bytes bytes) {
    Capabilities found;
    if (!saysCapabilities(bytes))
        return found;
    std::bitset<kCapabilityPositions> visited;
    std::size_t next = kFirstCapability;
    for (;;) {
        const std::size_t at = bytes[next] & ~(kCapabilityAlignment - 1);
        if (at < kHeaderSize || at + 2 > bytes.size() || visited[at / kCapabilityAlignment])
            return found;
        visited.set(at / kCapabilityAlignment);
        if (bytes[at] == kSubsystemCapability && found.subsystem == 0)
            found.subsystem = at;
        else if (bytes[at] == kExpressCapability && found.express == 0)
            found.express = at;
        next = at + 1;
    }
}

// Link capabilities and link status have them in the same bits.
std::uint8_t linkSpeedOf(unsigned link) {
    return static_cast<std::uint8_t>(link & 0x0F);
}
std::uint8_t linkWidthOf(unsigned link) {
    return static_cast<std::uint8_t>(link >> 4 & 0x3F);
}

PortType portTypeOf(unsigned capabilities) {
    switch (capabilities >> 4 & 0x0F) {
    case 4:
        return PortType::rootPort;
    case 5:
        return PortType::upstreamPort;
    case 6:
        return PortType::downstreamPort;
    case 7:
    case 8:
        return PortType::other;
    default:
        return PortType::unknown;
    }
}

} // namespace

bool isDead(std::span<const std::uint8_t> bytes) {
    return read16(bytes, kVendorId) == kNobody;
}

bool saysCapabilities(std::span<const std::uint8_t> bytes) {
    return (read16(bytes, kStatus) & kStatusHasCapabilities) != 0;
}

void decodeConfigSpace(std::span<const std::uint8_t> bytes, PciFunction& result) {
    result.vendorId = read16(bytes, kVendorId);
    result.deviceId = read16(bytes, kDeviceId);
    result.headerType = static_cast<std::uint8_t>(bytes[kHeaderType] & ~kMultiFunction);
    result.subsystemVendorId = 0;
    result.subsystemId = 0;
    result.secondaryBus = 0;
    result.subordinateBus = 0;
    result.linkWidth = 0;
    result.linkSpeed = 0;
    if (result.headerType == 0) {
        result.subsystemVendorId = read16(bytes, kSubsystemVendorId);
        result.subsystemId = read16(bytes, kSubsystemId);
    }
    if (result.isBridge() || result.isCardBusBridge()) {
        result.secondaryBus = bytes[kSecondaryBus];
        result.subordinateBus = bytes[kSubordinateBus];
    }
    if (!result.isBridge())
        return;
    const Capabilities capabilities = findCapabilities(bytes);
    if (const std::size_t at = capabilities.subsystem) {
        result.subsystemVendorId = read16(bytes, at + kSubsystemCapabilityVendorId);
        result.subsystemId = read16(bytes, at + kSubsystemCapabilityId);
    }
    if (const std::size_t at = capabilities.express) {
        const unsigned link = read16(bytes, at + kExpressLinkCapabilities);
        result.linkSpeed = linkSpeedOf(link);
        result.linkWidth = linkWidthOf(link);
    }
}

Link decodeLink(std::span<const std::uint8_t> bytes) {
    const std::size_t at = findCapabilities(bytes).express;
    if (at == 0) {
        Link link;
        const bool isBridge = (bytes[kHeaderType] & ~kMultiFunction) == 1;
        if (isBridge && (!saysCapabilities(bytes) || bytes.size() >= kStandardSize))
            link.port = PortType::other;
        return link;
    }
    const unsigned able = read16(bytes, at + kExpressLinkCapabilities);
    const unsigned runs = read16(bytes, at + kExpressLinkStatus);
    return {linkWidthOf(able), linkSpeedOf(able), linkWidthOf(runs), linkSpeedOf(runs),
            portTypeOf(read16(bytes, at + kExpressCapabilities))};
}

} // namespace pcibus
