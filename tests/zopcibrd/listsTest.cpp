// The lists of bridges and buses: their content, their order and the two-step protocol.
#include "tests/zopcibrd/bridgeLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using zopcibrdtest::kUntouched;

class Lists : public zopcibrdtest::WithSession {
protected:
    using Ids = std::vector<std::uint16_t>;

    // A list function with everything but its array and count given.
    template <class Element>
    using Ask = std::function<std::int32_t(Element*, std::uint32_t*)>;

    // Goes through the whole protocol and answers the list.
    template <class Element>
    std::vector<Element> list(const Ask<Element>& ask) const {
        constexpr auto kFiller = static_cast<Element>(kUntouched);
        EXPECT_EQ(ask(nullptr, nullptr), kPciBrdErrInvalidArgument);

        std::uint32_t needed = 0;
        const std::int32_t status = ask(nullptr, &needed);
        if (needed == 0) {
            EXPECT_EQ(status, 0);
            std::uint32_t count = 3;
            std::vector<Element> room(3, kFiller);
            EXPECT_EQ(ask(nullptr, &count), 0);
            EXPECT_EQ(count, 0U);
            count = 3;
            EXPECT_EQ(ask(room.data(), &count), 0);
            EXPECT_EQ(count, 0U);
            EXPECT_EQ(room, std::vector<Element>(3, kFiller));
            return {};
        }
        EXPECT_EQ(status, kPciBrdErrBufferTooSmall);

        std::uint32_t count = needed + 5;
        EXPECT_EQ(ask(nullptr, &count), kPciBrdErrBufferTooSmall) << "null, whatever the count";
        EXPECT_EQ(count, needed);

        std::vector<Element> room(needed + 1, kFiller);
        for (std::uint32_t tooFew = 0; tooFew < needed; ++tooFew) {
            count = tooFew;
            EXPECT_EQ(ask(room.data(), &count), kPciBrdErrBufferTooSmall);
            EXPECT_EQ(count, needed);
            EXPECT_EQ(room, std::vector<Element>(needed + 1, kFiller));
        }
        for (const std::uint32_t enough : {needed, needed + 1}) {
            room.assign(needed + 1, kFiller);
            count = enough;
            EXPECT_EQ(ask(room.data(), &count), 0);
            EXPECT_EQ(count, needed);
            EXPECT_EQ(room.back(), kFiller) << "written beyond the list";
        }
        EXPECT_EQ(ask(room.data(), nullptr), kPciBrdErrInvalidArgument);
        room.pop_back();
        return room;
    }

    std::vector<std::uint32_t> byIds(Ids ids) const {
        return list<std::uint32_t>([&](std::uint32_t* array, std::uint32_t* count) {
            return library.FindBridgesByPciIds(session, ids[0], ids[1], ids[2], ids[3], array,
                                               count);
        });
    }
    std::vector<std::uint32_t> below(std::uint32_t bridge) const {
        return list<std::uint32_t>([&](std::uint32_t* array, std::uint32_t* count) {
            return library.GetBridgeChildren(session, bridge, array, count);
        });
    }
    std::vector<std::uint32_t> on(std::uint8_t bus) const {
        return list<std::uint32_t>([&](std::uint32_t* array, std::uint32_t* count) {
            return library.GetBusChildren(session, bus, array, count);
        });
    }
    std::vector<std::uint8_t> roots() const {
        return list<std::uint8_t>([&](std::uint8_t* array, std::uint32_t* count) {
            return library.GetRootBuses(session, array, count);
        });
    }
};

TEST_F(Lists, BridgesByIdentifiers) {
    EXPECT_THAT(byIds({0x10B5, 0x8609, 0x1234, 0x0002}), ElementsAre(0x0208, 0x0210));
    EXPECT_THAT(byIds({0x8086, 0xA110, 0x1043, 0x836B}), ElementsAre(0x00E0, 0x4019));
    EXPECT_THAT(byIds({0x8086, 0x244E, 0, 0}), ElementsAre(0x00F0));
    EXPECT_THAT(byIds({0x10B5, 0x8609, 0x1234, 0x0003}), IsEmpty());
    EXPECT_THAT(byIds({0x1172, 0xE001, 0x1234, 0x0010}), IsEmpty()) << "no bridge";
}

TEST_F(Lists, ChildrenOfABridge) {
    EXPECT_THAT(below(handle(machine.up)), ElementsAre(0x0208, 0x0210));
    EXPECT_THAT(below(handle(machine.port)), ElementsAre(0x0100));
    EXPECT_THAT(below(handle(machine.downA)), IsEmpty()) << "only endpoints";
    EXPECT_THAT(below(handle(machine.conventional)), IsEmpty()) << "nothing at all";
}

TEST_F(Lists, ChildrenOfABadBridgeAreABadArgument) {
    for (const std::uint32_t bad : kBadBridges) {
        std::uint32_t count = kUntouched;
        EXPECT_EQ(library.GetBridgeChildren(session, bad, nullptr, &count),
                  kPciBrdErrInvalidArgument);
        EXPECT_EQ(count, kUntouched);
    }
}

TEST_F(Lists, BridgesOfABus) {
    EXPECT_THAT(on(0), ElementsAre(0x00E0, 0x00F0));
    EXPECT_THAT(on(2), ElementsAre(0x0208, 0x0210));
    EXPECT_THAT(on(3), IsEmpty());
    EXPECT_THAT(on(0x40), ElementsAre(0x4019));
    EXPECT_THAT(on(0xEE), IsEmpty()) << "no such bus";
}

TEST_F(Lists, RootBuses) {
    EXPECT_THAT(roots(), ElementsAre(0, 0x40));
}

TEST_F(Lists, OfALargeMachineAreComplete) {
    const testsupport::BusBuilder big = testsupport::bigBus();
    session = open(big);
    std::vector<std::uint32_t> upstream;
    for (const auto& function : big.functions()) {
        if (function.isBridge() && function.bus == 0)
            upstream.push_back(function.handle());
    }
    EXPECT_EQ(upstream.size(), 10U);
    EXPECT_THAT(on(0), ElementsAreArray(upstream));
    EXPECT_EQ(byIds({0x10B5, 0x8749, 0x1234, 0x0200}).size(), 230U);
}

TEST_F(Lists, OfAnEmptyBusAreEmpty) {
    session = open(testsupport::BusBuilder());
    EXPECT_THAT(roots(), IsEmpty());
    EXPECT_THAT(on(0), IsEmpty());
    EXPECT_THAT(byIds({0, 0, 0, 0}), IsEmpty());
}

TEST_F(Lists, OfFunctionsHaveWhatTheBusHas) {
    std::uint32_t count = 0;
    EXPECT_EQ(library.GetFunctions(session, nullptr, nullptr), kPciBrdErrInvalidArgument);
    EXPECT_EQ(library.GetFunctions(session + 1, nullptr, &count), kPciBrdErrInvalidArgument);
    EXPECT_EQ(library.GetFunctions(session, nullptr, &count), kPciBrdErrBufferTooSmall);
    const auto expected = machine.bus.functions();
    ASSERT_EQ(count, expected.size());
    std::vector<tZoPciBrdFunction> functions(count);
    --count;
    EXPECT_EQ(library.GetFunctions(session, functions.data(), &count), kPciBrdErrBufferTooSmall);
    EXPECT_EQ(functions.front().handle, 0U);
    EXPECT_EQ(functions.front().vendor, 0U);
    ASSERT_EQ(library.GetFunctions(session, functions.data(), &count), 0);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const pcibus::PciFunction& function = expected[i];
        EXPECT_EQ(functions[i].handle, function.handle());
        EXPECT_EQ(functions[i].headerType, function.headerType);
        EXPECT_EQ(functions[i].vendor, function.vendorId);
        EXPECT_EQ(functions[i].device, function.deviceId);
        EXPECT_EQ(functions[i].subsystemVendor, function.subsystemVendorId);
        EXPECT_EQ(functions[i].subsystem, function.subsystemId);
        EXPECT_EQ(functions[i].secondaryBus, function.secondaryBus);
        EXPECT_EQ(functions[i].subordinateBus, function.subordinateBus);
        EXPECT_EQ(functions[i].linkWidth, function.linkWidth);
        EXPECT_EQ(functions[i].linkSpeed, function.linkSpeed);
    }
}

TEST_F(Lists, ABusHasTheLowestBridgeAsItsParentAndNoOther) {
    machine.bus.setSecondaryBus(machine.conventional, 1);
    session = open(machine.bus);
    EXPECT_THAT(below(handle(machine.port)), ElementsAre(0x0100));
    EXPECT_THAT(below(handle(machine.conventional)), IsEmpty());
}

} // namespace
