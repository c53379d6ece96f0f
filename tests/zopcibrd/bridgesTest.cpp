// Single bridges: finding them, going up, and what they are.
#include "tests/zopcibrd/bridgeLibrary.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace {

using zopcibrdtest::kUntouched;

class Bridges : public zopcibrdtest::WithSession {
protected:
    using Ask = std::function<std::int32_t(std::uint32_t*)>;

    // The handle that a look-up answers; a status other than 0 leaves the output alone and is
    // answered itself.
    static std::int64_t one(const Ask& ask) {
        EXPECT_EQ(ask(nullptr), kPciBrdErrInvalidArgument);
        std::uint32_t value = kUntouched;
        const std::int32_t status = ask(&value);
        if (status == 0)
            return value;
        EXPECT_EQ(value, kUntouched);
        return status;
    }

    std::int64_t at(std::uint8_t bus, std::uint8_t device, std::uint8_t function) const {
        return one([&](std::uint32_t* bridge) {
            return library.FindBridgeByAddress(session, bus, device, function, bridge);
        });
    }
    std::int64_t above(std::uint8_t bus) const {
        return one([&](std::uint32_t* bridge) {
            return library.FindParentBridgeForBus(session, bus, bridge);
        });
    }
    std::int64_t parent(std::uint32_t bridge) const {
        return one([&](std::uint32_t* result) {
            return library.GetBridgeParent(session, bridge, result);
        });
    }
    std::int64_t attribute(std::uint32_t bridge, std::uint32_t number) const {
        return one([&](std::uint32_t* value) {
            return library.GetAttributeU32(session, bridge, number, value);
        });
    }
};

TEST_F(Bridges, AreFoundByAddress) {
    EXPECT_EQ(at(0, 0x1C, 0), 0x00E0);
    EXPECT_EQ(at(0x40, 3, 1), 0x4019);
    EXPECT_EQ(at(0, 0x1C, 1), kPciBrdErrNotFound);
    EXPECT_EQ(at(0, 0, 0), kPciBrdErrNotFound) << "a function that is no bridge";
    EXPECT_EQ(at(9, 0, 0), kPciBrdErrNotFound);
}

TEST_F(Bridges, AreNotFoundByNumbersOutOfRange) {
    // Taken into a handle as they are, they would name 02:01.0 and 00:1c.0.
    EXPECT_EQ(at(0, 0x41, 0), kPciBrdErrNotFound);
    EXPECT_EQ(at(2, 0x21, 0), kPciBrdErrNotFound);
    EXPECT_EQ(at(0, 0, 0xE0), kPciBrdErrNotFound);
    EXPECT_EQ(at(0, 0x18, 0x20), kPciBrdErrNotFound);
}

TEST_F(Bridges, AreFoundByTheBusBelow) {
    EXPECT_EQ(above(1), 0x00E0);
    EXPECT_EQ(above(3), 0x0208);
    EXPECT_EQ(above(5), 0x00F0) << "a bus without functions";
    EXPECT_EQ(above(0), kPciBrdErrNotFound);
    EXPECT_EQ(above(0x40), kPciBrdErrNotFound);
    EXPECT_EQ(above(0xFF), kPciBrdErrNotFound);
}

TEST_F(Bridges, BusBelowABridgeThatIsNotConfiguredIsNone) {
    machine.bus.setSecondaryBus(machine.conventional, 0);
    session = open(machine.bus);
    EXPECT_EQ(above(0), kPciBrdErrNotFound);
    EXPECT_EQ(attribute(handle(machine.conventional), kPciBrdAttrSecondaryBus), 0);
}

TEST_F(Bridges, LowerOfTwoWithOneSecondaryBusIsTheParent) {
    machine.bus.setSecondaryBus(machine.conventional, 1);
    session = open(machine.bus);
    EXPECT_EQ(above(1), 0x00E0);
    EXPECT_EQ(parent(0x0100), 0x00E0);
}

TEST_F(Bridges, KnowTheBridgeAbove) {
    EXPECT_EQ(parent(0x0208), 0x0100);
    EXPECT_EQ(parent(0x0100), 0x00E0);
    EXPECT_EQ(parent(0x00E0), kPciBrdErrNotFound);
    for (const std::uint32_t bad : kBadBridges)
        EXPECT_EQ(parent(bad), kPciBrdErrInvalidArgument) << bad;
}

TEST_F(Bridges, KnowTheirAddress) {
    std::uint8_t bus = 0xA5;
    std::uint8_t device = 0xA5;
    std::uint8_t function = 0xA5;
    EXPECT_EQ(library.GetBridgeAddress(session, 0x4019, &bus, &device, &function), 0);
    EXPECT_EQ(bus, 0x40);
    EXPECT_EQ(device, 3);
    EXPECT_EQ(function, 1);
}

TEST_F(Bridges, TellOnlyThePartsOfTheAddressThatAreAskedFor) {
    std::uint8_t bus = 0xA5;
    std::uint8_t device = 0xA5;
    std::uint8_t function = 0xA5;
    EXPECT_EQ(library.GetBridgeAddress(session, 0x4019, &bus, nullptr, nullptr), 0);
    EXPECT_EQ(library.GetBridgeAddress(session, 0x4019, nullptr, &device, nullptr), 0);
    EXPECT_EQ(library.GetBridgeAddress(session, 0x4019, nullptr, nullptr, &function), 0);
    EXPECT_EQ(library.GetBridgeAddress(session, 0x4019, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(bus, 0x40);
    EXPECT_EQ(device, 3);
    EXPECT_EQ(function, 1);
}

TEST_F(Bridges, AddressOfABadBridgeIsABadArgument) {
    for (const std::uint32_t bad : kBadBridges) {
        std::uint8_t part = 0xA5;
        EXPECT_EQ(library.GetBridgeAddress(session, bad, &part, &part, &part),
                  kPciBrdErrInvalidArgument);
        EXPECT_EQ(part, 0xA5);
        EXPECT_EQ(library.GetBridgeAddress(session, bad, nullptr, nullptr, nullptr),
                  kPciBrdErrInvalidArgument);
    }
}

TEST_F(Bridges, KnowTheirIdentifiers) {
    std::uint16_t ids[4] = {};
    EXPECT_EQ(library.GetBridgeIds(session, 0x0210, &ids[0], &ids[1], &ids[2], &ids[3]), 0);
    EXPECT_EQ(ids[0], 0x10B5);
    EXPECT_EQ(ids[1], 0x8609);
    EXPECT_EQ(ids[2], 0x1234);
    EXPECT_EQ(ids[3], 0x0002);
}

TEST_F(Bridges, TellOnlyTheIdentifiersThatAreAskedFor) {
    const std::vector<std::uint16_t> expected = {0x10B5, 0x8609, 0x1234, 0x0002};
    for (std::size_t wanted = 0; wanted <= 4; ++wanted) {
        std::uint16_t value = 0xA5A5;
        std::uint16_t* outputs[4] = {};
        if (wanted < 4)
            outputs[wanted] = &value;
        EXPECT_EQ(
            library.GetBridgeIds(session, 0x0210, outputs[0], outputs[1], outputs[2], outputs[3]),
            0);
        EXPECT_EQ(value, wanted < 4 ? expected[wanted] : 0xA5A5);
    }
}

TEST_F(Bridges, IdentifiersOfABadBridgeAreABadArgument) {
    for (const std::uint32_t bad : kBadBridges) {
        std::uint16_t value = 0xA5A5;
        EXPECT_EQ(library.GetBridgeIds(session, bad, &value, &value, &value, &value),
                  kPciBrdErrInvalidArgument);
        EXPECT_EQ(value, 0xA5A5);
    }
}

TEST_F(Bridges, HaveThreeAttributes) {
    EXPECT_EQ(attribute(0x00E0, 0x20000300), 1);
    EXPECT_EQ(attribute(0x00E0, 0x20000B00), 16);
    EXPECT_EQ(attribute(0x00E0, 0x20000C00), 3);
    EXPECT_EQ(attribute(0x00F0, 0x20000300), 5);
    EXPECT_EQ(attribute(0x00F0, 0x20000B00), 0) << "a bridge without a link";
    EXPECT_EQ(attribute(0x00F0, 0x20000C00), 0);
}

TEST_F(Bridges, HaveNoOtherAttributes) {
    for (const std::uint32_t number :
         {0U, 0x20000000U, 0x20000301U, 0x20000A00U, 0x20000D00U, 0x30000300U, 0xFFFFFFFFU})
        EXPECT_EQ(attribute(0x00E0, number), kPciBrdErrInvalidArgument) << number;
}

TEST_F(Bridges, AttributesOfABadBridgeAreABadArgument) {
    for (const std::uint32_t bad : kBadBridges)
        EXPECT_EQ(attribute(bad, kPciBrdAttrSecondaryBus), kPciBrdErrInvalidArgument);
}

TEST_F(Bridges, CanBeOpenedAndClosedInAnyOrder) {
    EXPECT_EQ(library.CloseBridge(session, 0x00E0), 0);
    EXPECT_EQ(library.OpenBridge(session, 0x00E0), 0);
    EXPECT_EQ(library.OpenBridge(session, 0x00E0), 0);
    EXPECT_EQ(library.CloseBridge(session, 0x00E0), 0);
    for (const std::uint32_t bad : kBadBridges) {
        EXPECT_EQ(library.OpenBridge(session, bad), kPciBrdErrInvalidArgument);
        EXPECT_EQ(library.CloseBridge(session, bad), kPciBrdErrInvalidArgument);
    }
}

TEST_F(Bridges, AreNeverChanged) {
    EXPECT_EQ(library.SetAttributeU32(session, 0x00E0, kPciBrdAttrSecondaryBus, 9),
              kPciBrdErrUnavailable);
    EXPECT_EQ(library.SetAttributeU32(session, 0xFFFFFFFF, 0, 0), kPciBrdErrUnavailable);
    char image[4] = {};
    EXPECT_EQ(library.EepromUpdate(session, 0x00E0, 1, 2, 3, 4, 5, image), kPciBrdErrUnavailable);
    EXPECT_EQ(attribute(0x00E0, kPciBrdAttrSecondaryBus), 1);
}

} // namespace
