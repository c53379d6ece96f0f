// The builder of test machines keeps its own promises.
#include "tests/support/machines.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using testsupport::BusBuilder;

constexpr testsupport::Ids kIds{0x8086, 0x1234};

TEST(BusBuilder, NumbersBusesDepthFirstInAddressOrder) {
    BusBuilder machine;
    const auto high = machine.rootPort(0, 5, 0, kIds);
    const auto low = machine.rootPort(0, 1, 0, kIds);
    const auto below = machine.bridge(low, 3, 0, kIds);
    const auto first = machine.bridge(low, 2, 0, kIds);
    EXPECT_EQ(machine.secondaryBus(low), 1);
    EXPECT_EQ(machine.secondaryBus(first), 2);
    EXPECT_EQ(machine.secondaryBus(below), 3);
    EXPECT_EQ(machine.subordinateBus(low), 3);
    EXPECT_EQ(machine.secondaryBus(high), 4);
    EXPECT_EQ(machine.subordinateBus(high), 4);
    EXPECT_EQ(machine.bus(below), 1);
    EXPECT_EQ(machine.handle(below), 0x118U);
    EXPECT_EQ(machine.address(below), "01:03.0");
    EXPECT_EQ(machine.slotPath(below), "MR00:18,08");
}

TEST(BusBuilder, NumbersAgainAfterAnAddition) {
    BusBuilder machine;
    const auto high = machine.rootPort(0, 5, 0, kIds);
    EXPECT_EQ(machine.secondaryBus(high), 1);
    machine.rootPort(0, 1, 0, kIds);
    EXPECT_EQ(machine.secondaryBus(high), 2);
}

TEST(BusBuilder, RefusesMisuse) {
    BusBuilder machine;
    const auto port = machine.rootPort(0, 1, 0, kIds);
    const auto card = machine.endpoint(port, 0, 0, kIds);
    EXPECT_THROW(machine.endpoint(port, 0, 0, kIds), std::logic_error);
    EXPECT_THROW(machine.rootEndpoint(0, 1, 0, kIds), std::logic_error);
    EXPECT_THROW(machine.endpoint(port, 32, 0, kIds), std::logic_error);
    EXPECT_THROW(machine.endpoint(port, 0, 8, kIds), std::logic_error);
    EXPECT_THROW(machine.endpoint(card, 0, 0, kIds), std::logic_error);
    EXPECT_THROW(machine.bridge(card, 0, 0, kIds), std::logic_error);
    EXPECT_THROW(machine.rootPort(256, 0, 0, kIds), std::logic_error);
    EXPECT_THROW(machine.rootPort(0, 2, 0, kIds, 64), std::logic_error);
    EXPECT_THROW(machine.setSecondaryBus(card, 1), std::logic_error);
    EXPECT_THROW((void)machine.bus({99}), std::logic_error);
}

TEST(BusBuilder, RefusesBusNumbersThatRunIntoARootBus) {
    BusBuilder machine;
    machine.rootPort(0, 1, 0, kIds);
    const auto port = machine.rootPort(1, 0, 0, kIds);
    EXPECT_THROW((void)machine.bus(port), std::logic_error);
}

TEST(BusBuilder, RefusesMoreBusesThanThereAre) {
    BusBuilder machine;
    auto port = machine.rootPort(0, 1, 0, kIds);
    for (unsigned bus = 1; bus < 255; ++bus)
        port = machine.bridge(port, 0, 0, kIds);
    EXPECT_EQ(machine.secondaryBus(port), 255);
    machine.bridge(port, 0, 0, kIds);
    EXPECT_THROW((void)machine.bus(port), std::logic_error);
}

TEST(BusBuilder, BigBusHas250BridgesAnd1500OtherFunctions) {
    std::size_t bridges = 0;
    std::size_t others = 0;
    for (const auto& function : testsupport::bigBus().functions())
        ++(function.isBridge() ? bridges : others);
    EXPECT_EQ(bridges, 250U);
    EXPECT_EQ(others, 1500U);
    EXPECT_EQ(testsupport::bigBus().dump(), testsupport::bigBus().dump());
}

} // namespace
