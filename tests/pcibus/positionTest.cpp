// Each function has exactly one position, and is found again by it.
#include "pcibus/position.h"

#include "tests/support/machines.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

using pcibus::Bus;
using pcibus::functionAt;
using pcibus::PciFunction;
using pcibus::Position;
using pcibus::positionOf;

Bus builtBus(const testsupport::BusBuilder& machine) {
    return Bus(machine.functions(), [](const PciFunction&) { return std::string("here"); });
}

std::string text(const Position& position) {
    char part[8];
    std::snprintf(part, sizeof part, "MR%02X:", unsigned{position.rootBus});
    std::string result = part;
    for (const std::uint8_t hop : position.hops()) {
        std::snprintf(part, sizeof part, "%02X,", unsigned{hop});
        result += part;
    }
    result.pop_back();
    return result;
}

const PciFunction* at(const Bus& bus, std::uint8_t root, std::vector<std::uint8_t> hops) {
    return functionAt(bus, root, hops);
}

TEST(Position, HopsGoFromTheFunctionUpToTheRoot) {
    const testsupport::machines::Switch machine;
    const Bus bus = builtBus(machine.bus);
    EXPECT_EQ(text(positionOf(bus, *bus.find(machine.bus.handle(machine.second)))),
              "MR00:01,08,00,E0");
    EXPECT_EQ(text(positionOf(bus, *bus.find(machine.bus.handle(machine.otherCard)))),
              "MR40:FF,19");
    EXPECT_EQ(text(positionOf(bus, *bus.find(machine.bus.handle(machine.port)))), "MR00:E0");
}

TEST(Position, EveryFunctionIsFoundAgain) {
    const testsupport::BusBuilder machine = testsupport::bigBus();
    const Bus bus = builtBus(machine);
    for (const auto node : machine.nodes()) {
        const PciFunction* const function = bus.find(machine.handle(node));
        ASSERT_NE(function, nullptr);
        const Position position = positionOf(bus, *function);
        ASSERT_EQ(text(position), machine.slotPath(node));
        ASSERT_EQ(functionAt(bus, position.rootBus, position.hops()), function);
    }
}

TEST(Position, NothingIsFoundWhereNothingIs) {
    const testsupport::machines::Switch machine;
    const Bus bus = builtBus(machine.bus);
    EXPECT_EQ(at(bus, 0, {}), nullptr);
    EXPECT_EQ(at(bus, 0, {0xE1}), nullptr) << "no such function";
    EXPECT_EQ(at(bus, 0, {0x08, 0xE0}), nullptr) << "no such function below";
    EXPECT_EQ(at(bus, 0, {0xE0, 0x00}), nullptr) << "the way leads through no bridge";
    EXPECT_EQ(at(bus, 9, {0x00}), nullptr) << "no such bus";
    EXPECT_EQ(at(bus, 1, {0x00}), nullptr) << "no root bus";
    EXPECT_NE(at(bus, 0, {0x00, 0xE0}), nullptr);
}

TEST(Position, GoesOnlyThroughTheParentOfABus) {
    testsupport::machines::Switch machine;
    machine.bus.setSecondaryBus(machine.conventional, 1);
    const Bus bus = builtBus(machine.bus);
    EXPECT_NE(at(bus, 0, {0x00, 0xE0}), nullptr);
    EXPECT_EQ(at(bus, 0, {0x00, 0xF0}), nullptr);
    EXPECT_NE(at(bus, 0, {0xF0}), nullptr);
}

TEST(Position, DoesNotGoThroughABridgeWithoutABusBelow) {
    testsupport::machines::Switch machine;
    machine.bus.setSecondaryBus(machine.conventional, 0);
    const Bus bus = builtBus(machine.bus);
    EXPECT_EQ(at(bus, 0, {0xE0, 0xF0}), nullptr);
}

TEST(Position, DeepestTreeFits) {
    std::vector<PciFunction> functions;
    for (unsigned number = 0; number < 256; ++number) {
        PciFunction bridge;
        bridge.bus = static_cast<std::uint8_t>(number);
        bridge.headerType = 1;
        bridge.secondaryBus = static_cast<std::uint8_t>(number + 1);
        functions.push_back(bridge);
    }
    const Bus bus(functions, [](const PciFunction&) { return std::string("here"); });
    const Position position = positionOf(bus, *bus.find(0xFF00));
    EXPECT_EQ(position.hopCount, 256U);
    EXPECT_EQ(position.rootBus, 0);
    EXPECT_EQ(functionAt(bus, 0, position.hops()), bus.find(0xFF00));
    std::vector<std::uint8_t> tooMany(257, 0);
    EXPECT_EQ(functionAt(bus, 0, tooMany), nullptr);
}

} // namespace
