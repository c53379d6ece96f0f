#include "tavctl/mock/configBytes.h"

#include "pcibus/configSpace.h"

#include <cstddef>

namespace tavctl::mock {

namespace {

// Offsets in the header.
constexpr std::size_t kStatus = 0x06;
constexpr std::size_t kProgIf = 0x09;
constexpr std::size_t kClass = 0x0A;
constexpr std::size_t kHeaderType = 0x0E;
constexpr std::size_t kPrimaryBus = 0x18;
constexpr std::size_t kSecondaryBus = 0x19;
constexpr std::size_t kSubordinateBus = 0x1A;
constexpr std::size_t kIoBase = 0x1C;
constexpr std::size_t kMemoryBase = 0x20;
constexpr std::size_t kMemoryLimit = 0x22;
constexpr std::size_t kPrefetchableBase = 0x24;
constexpr std::size_t kPrefetchableLimit = 0x26;
constexpr std::size_t kSubsystem = 0x2C;
constexpr std::size_t kFirstCapability = 0x34;

constexpr std::uint8_t kHasCapabilities = 0x10;
constexpr std::uint8_t kMultiFunction = 0x80;

// Where the made capabilities stand, and what is in them.
constexpr std::size_t kExpressAt = 0x40;
constexpr std::size_t kSubsystemAt = 0x80;
constexpr std::uint8_t kExpressCapability = 0x10;
constexpr std::uint8_t kSubsystemCapability = 0x0D;
constexpr std::size_t kLinkCapabilities = 0x0C;
constexpr std::size_t kLinkStatus = 0x12;
constexpr std::size_t kLinkControl2 = 0x30;
constexpr std::size_t kSupportedSpeeds = 0x2C;

class ConfigSpace {
public:
    explicit ConfigSpace(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}

    void put8(std::size_t at, unsigned value) {
        bytes_[at] = static_cast<std::uint8_t>(value & 0xFFU);
    }
    void put16(std::size_t at, unsigned value) {
        put8(at, value);
        put8(at + 1, value >> 8U);
    }
    [[nodiscard]] std::uint8_t get8(std::size_t at) const { return bytes_[at]; }

    // Puts a capability at the end of the list.
    void addCapability(std::size_t at, std::uint8_t id) {
        put8(kStatus, get8(kStatus) | kHasCapabilities);
        put8(last_, static_cast<unsigned>(at));
        put8(at, id);
        last_ = at + 1;
    }

    // Where a capability of a recorded function stands; 0 for one that it does not have.
    [[nodiscard]] std::size_t find(std::uint8_t id) const {
        if ((get8(kStatus) & kHasCapabilities) == 0)
            return 0;
        std::size_t at = get8(kFirstCapability) & 0xFCU;
        for (std::size_t seen = 0; seen < bytes_.size() / 4; ++seen) {
            if (at < pcibus::kHeaderSize || at + kLinkStatus + 2 > bytes_.size())
                return 0;
            if (get8(at) == id)
                return at;
            at = get8(at + 1) & 0xFCU;
        }
        return 0;
    }

    std::vector<std::uint8_t> take() { return std::move(bytes_); }

private:
    std::vector<std::uint8_t> bytes_;
    std::size_t last_ = kFirstCapability; // which leads to the next one
};

unsigned linkBits(unsigned width, unsigned speed) {
    return (speed & 0x0FU) | (width & 0x3FU) << 4U;
}

unsigned portTypeCode(LinkRole role) {
    switch (role) {
    case LinkRole::rootPort:
        return 4;
    case LinkRole::upstreamPort:
        return 5;
    case LinkRole::downstreamPort:
        return 6;
    case LinkRole::toConventionalBus:
        return 7;
    case LinkRole::endpoint:
        break;
    }
    return 0;
}

void putBusNumbers(ConfigSpace& space, const Function& function) {
    space.put8(kPrimaryBus, function.bus);
    space.put8(kSecondaryBus, function.secondary);
    space.put8(kSubordinateBus, function.subordinate);
}

// Windows that forward nothing: their ends lie before their beginnings.
void closeWindows(ConfigSpace& space) {
    space.put16(kIoBase, 0x00F0);
    space.put16(kMemoryBase, 0xFFF0);
    space.put16(kMemoryLimit, 0x0000);
    space.put16(kPrefetchableBase, 0xFFF1);
    space.put16(kPrefetchableLimit, 0x0001);
}

void addExpress(ConfigSpace& space, const pcibus::Link& link, LinkRole role) {
    space.addCapability(kExpressAt, kExpressCapability);
    space.put8(kExpressAt + 2, 2U | portTypeCode(role) << 4U);
    space.put16(kExpressAt + kLinkCapabilities, linkBits(link.maximumWidth, link.maximumSpeed));
    space.put16(kExpressAt + kLinkStatus, linkBits(link.width, link.speed));
    space.put8(kExpressAt + kSupportedSpeeds, (1U << (link.maximumSpeed + 1U)) - 2U);
    space.put8(kExpressAt + kLinkControl2, link.maximumSpeed);
}

std::vector<std::uint8_t> recordedBytes(const Function& function, bool hasNewLink) {
    ConfigSpace space(function.bytes);
    if (function.hasBusNumbers())
        putBusNumbers(space, function);
    if (const std::size_t at = hasNewLink ? space.find(kExpressCapability) : 0)
        space.put16(at + kLinkStatus, linkBits(function.link.width, function.link.speed));
    return space.take();
}

} // namespace

std::vector<std::uint8_t> configBytes(const Function& function, LinkRole role, bool isMultiFunction,
                                      bool hasNewLink) {
    if (!function.bytes.empty())
        return recordedBytes(function, hasNewLink);
    ConfigSpace space(std::vector<std::uint8_t>(pcibus::kStandardSize, 0));
    space.put16(0x00, function.ids.vendor);
    space.put16(0x02, function.ids.device);
    space.put8(kProgIf, 0);
    space.put16(kClass, function.deviceClass);
    space.put8(kHeaderType, function.headerType | (isMultiFunction ? kMultiFunction : 0U));
    if (function.hasLink)
        addExpress(space, function.link, role);
    if (!function.isBridge()) {
        space.put16(kSubsystem, function.ids.subsystemVendor);
        space.put16(kSubsystem + 2, function.ids.subsystem);
        return space.take();
    }
    putBusNumbers(space, function);
    closeWindows(space);
    if (function.ids.subsystemVendor != 0 || function.ids.subsystem != 0) {
        space.addCapability(kSubsystemAt, kSubsystemCapability);
        space.put16(kSubsystemAt + 4, function.ids.subsystemVendor);
        space.put16(kSubsystemAt + 6, function.ids.subsystem);
    }
    return space.take();
}

} // namespace tavctl::mock
