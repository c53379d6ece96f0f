// Slot paths as text, both ways.
#include "tests/zopcibrd/bridgeLibrary.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using zopcibrdtest::kUntouched;

class SlotPaths : public zopcibrdtest::WithSession {
protected:
    // The bridge at a path, or the status that is not 0.
    std::int64_t at(const char* text) const {
        std::uint32_t bridge = kUntouched;
        const std::int32_t status = library.FindBridgeBySlotPath(session, text, &bridge);
        if (status == 0)
            return bridge;
        EXPECT_EQ(bridge, kUntouched);
        return status;
    }

    std::string pathOf(std::uint32_t bridge) const {
        std::uint32_t size = 0;
        EXPECT_EQ(library.GetBridgeSlotPath(session, bridge, nullptr, &size),
                  kPciBrdErrBufferTooSmall);
        std::string text(size, '?');
        EXPECT_EQ(library.GetBridgeSlotPath(session, bridge, text.data(), &size), 0);
        EXPECT_EQ(text.size(), size);
        EXPECT_EQ(text.back(), '\0');
        text.pop_back();
        return text;
    }
};

TEST_F(SlotPaths, HaveTheHopNearestTheBridgeFirst) {
    EXPECT_EQ(pathOf(handle(machine.port)), "MR00:E0");
    EXPECT_EQ(pathOf(handle(machine.up)), "MR00:00,E0");
    EXPECT_EQ(pathOf(handle(machine.downA)), "MR00:08,00,E0");
    EXPECT_EQ(pathOf(handle(machine.otherPort)), "MR40:19");
}

TEST_F(SlotPaths, TextFollowsTheSizeProtocol) {
    const std::uint32_t bridge = handle(machine.up);
    std::uint32_t size = 0;
    EXPECT_EQ(library.GetBridgeSlotPath(session, bridge, nullptr, nullptr),
              kPciBrdErrInvalidArgument);
    EXPECT_EQ(library.GetBridgeSlotPath(session, bridge, nullptr, &size), kPciBrdErrBufferTooSmall);
    EXPECT_EQ(size, sizeof "MR00:00,E0");
    size = 100;
    EXPECT_EQ(library.GetBridgeSlotPath(session, bridge, nullptr, &size), kPciBrdErrBufferTooSmall);
    EXPECT_EQ(size, sizeof "MR00:00,E0");
    std::string text(20, '?');
    EXPECT_EQ(library.GetBridgeSlotPath(session, bridge, text.data(), nullptr),
              kPciBrdErrInvalidArgument);
    for (std::uint32_t tooSmall = 0; tooSmall < sizeof "MR00:00,E0"; ++tooSmall) {
        size = tooSmall;
        EXPECT_EQ(library.GetBridgeSlotPath(session, bridge, text.data(), &size),
                  kPciBrdErrBufferTooSmall);
        EXPECT_EQ(size, sizeof "MR00:00,E0");
        EXPECT_EQ(text, std::string(20, '?'));
    }
    for (const std::uint32_t enough : {11U, 20U}) {
        size = enough;
        text.assign(20, '?');
        EXPECT_EQ(library.GetBridgeSlotPath(session, bridge, text.data(), &size), 0);
        EXPECT_EQ(size, 11U);
        EXPECT_EQ(text, std::string("MR00:00,E0\0", 11) + std::string(9, '?'));
    }
}

TEST_F(SlotPaths, OfABadBridgeAreABadArgument) {
    for (const std::uint32_t bad : kBadBridges) {
        std::uint32_t size = kUntouched;
        EXPECT_EQ(library.GetBridgeSlotPath(session, bad, nullptr, &size),
                  kPciBrdErrInvalidArgument);
        EXPECT_EQ(size, kUntouched);
    }
}

TEST_F(SlotPaths, LeadBackToTheirBridge) {
    const testsupport::BusBuilder big = testsupport::bigBus();
    session = open(big);
    std::size_t bridges = 0;
    for (const auto node : big.nodes()) {
        std::uint32_t ignored = 0;
        if (library.OpenBridge(session, big.handle(node)) != 0) {
            EXPECT_EQ(library.FindBridgeBySlotPath(session, big.slotPath(node).c_str(), &ignored),
                      kPciBrdErrNotFound)
                << "no bridge";
            continue;
        }
        ++bridges;
        ASSERT_EQ(pathOf(big.handle(node)), big.slotPath(node));
        ASSERT_EQ(at(big.slotPath(node).c_str()), big.handle(node));
    }
    EXPECT_EQ(bridges, 250U);
}

TEST_F(SlotPaths, DeepestTreeHasOne) {
    testsupport::BusBuilder deep;
    auto node = deep.rootPort(0, 1, 0, {0x8086, 0xA110});
    for (unsigned bus = 1; bus < 255; ++bus)
        node = deep.bridge(node, 0, 0, {0x10B5, 0x8609});
    session = open(deep);
    EXPECT_EQ(pathOf(deep.handle(node)), deep.slotPath(node));
    EXPECT_EQ(at(deep.slotPath(node).c_str()), deep.handle(node));
}

TEST_F(SlotPaths, MayBeWrittenWithADecimalRootOrNone) {
    EXPECT_EQ(at("MR00:08,00,E0"), 0x0208);
    EXPECT_EQ(at("0:08,00,E0"), 0x0208);
    EXPECT_EQ(at("08,00,E0"), 0x0208);
    EXPECT_EQ(at("08,00,e0"), 0x0208);
    EXPECT_EQ(at("MR40:19"), 0x4019);
    EXPECT_EQ(at("64:19"), 0x4019);
    EXPECT_EQ(at("MR00:E0,"), 0x00E0) << "a trailing comma ends the list";
    EXPECT_EQ(at("MR00:E0;whatever"), 0x00E0) << "so does anything but a comma";
}

TEST_F(SlotPaths, TextThatCannotBeReadIsABadArgument) {
    EXPECT_EQ(at("MR00:xy"), kPciBrdErrInvalidArgument);
    EXPECT_EQ(at("MR00:E0,xy"), kPciBrdErrInvalidArgument);
    EXPECT_EQ(at("somewhere"), kPciBrdErrInvalidArgument);
    EXPECT_EQ(at(nullptr), kPciBrdErrInvalidArgument);
    EXPECT_EQ(library.FindBridgeBySlotPath(session, "MR00:E0", nullptr), kPciBrdErrInvalidArgument);
    EXPECT_EQ(library.FindBridgeBySlotPath(session, nullptr, nullptr), kPciBrdErrInvalidArgument);
}

TEST_F(SlotPaths, WithoutHopsLeadNowhere) {
    EXPECT_EQ(at("MR00:"), kPciBrdErrNotFound);
    EXPECT_EQ(at("MR40:"), kPciBrdErrNotFound);
    EXPECT_EQ(at("0:"), kPciBrdErrNotFound);
    EXPECT_EQ(at(""), kPciBrdErrNotFound);
}

TEST_F(SlotPaths, ThatLeadNowhereAreNotFound) {
    EXPECT_EQ(at("MR00:E1"), kPciBrdErrNotFound) << "no function";
    EXPECT_EQ(at("MR00:00"), kPciBrdErrNotFound) << "no bridge";
    EXPECT_EQ(at("MR00:E0,00"), kPciBrdErrNotFound) << "through no bridge";
    EXPECT_EQ(at("MR00:00,08,00,E0"), kPciBrdErrNotFound) << "an endpoint";
    EXPECT_EQ(at("MR41:00"), kPciBrdErrNotFound) << "no root bus";
    EXPECT_EQ(at("MR01:00"), kPciBrdErrNotFound) << "a bus below a bridge";
    EXPECT_EQ(at("MR99:00"), kPciBrdErrNotFound) << "no bus at all";
}

TEST_F(SlotPaths, GoOnlyThroughTheParentOfABus) {
    machine.bus.setSecondaryBus(machine.conventional, 1);
    session = open(machine.bus);
    EXPECT_EQ(at("MR00:00,E0"), 0x0100);
    EXPECT_EQ(at("MR00:00,F0"), kPciBrdErrNotFound);
    EXPECT_EQ(pathOf(0x0100), "MR00:00,E0");
}

TEST_F(SlotPaths, LongerThanAnyTreeAreNotFound) {
    std::string text = "MR00:E0";
    for (int i = 0; i < 10000; ++i)
        text += ",E0";
    EXPECT_EQ(at(text.c_str()), kPciBrdErrNotFound);
}

} // namespace
