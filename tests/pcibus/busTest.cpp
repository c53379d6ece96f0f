// The tree that bridges form, and the look-ups in it.
#include "pcibus/bus.h"

#include "tests/support/machines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace {

using pcibus::Bus;
using pcibus::BusError;
using pcibus::PciFunction;
using testing::ElementsAre;
using testing::IsEmpty;

std::string placeOf(const PciFunction& function) {
    return "line " + std::to_string(function.line);
}

Bus made(const testsupport::BusBuilder& machine) {
    return Bus(machine.functions(), placeOf);
}

PciFunction endpoint(std::uint8_t bus, std::uint8_t device, std::uint32_t line = 0) {
    PciFunction function;
    function.bus = bus;
    function.device = device;
    function.line = line;
    return function;
}

PciFunction bridge(std::uint8_t bus, std::uint8_t device, std::uint8_t secondary,
                   std::uint32_t line = 0) {
    PciFunction function = endpoint(bus, device, line);
    function.headerType = 1;
    function.secondaryBus = secondary;
    return function;
}

std::string refusal(std::vector<PciFunction> functions) {
    try {
        const Bus bus(std::move(functions), placeOf);
    } catch (const BusError& error) {
        return error.what();
    }
    return "accepted";
}

TEST(Bus, WithoutFunctionsKnowsNothing) {
    const Bus bus;
    EXPECT_THAT(bus.functions(), IsEmpty());
    EXPECT_THAT(bus.bridges(), IsEmpty());
    EXPECT_THAT(bus.rootBuses(), IsEmpty());
    for (unsigned number = 0; number < Bus::kBusCount; ++number) {
        const auto each = static_cast<std::uint8_t>(number);
        EXPECT_EQ(bus.parentOfBus(each), nullptr);
        EXPECT_THAT(bus.bridgesOn(each), IsEmpty());
        EXPECT_THAT(bus.functionsOn(each), IsEmpty());
    }
    EXPECT_EQ(bus.find(0), nullptr);
    EXPECT_THAT(bus.bridgesWithIds({}), IsEmpty());
}

TEST(Bus, FindsFunctionsByHandle) {
    const testsupport::machines::Switch machine;
    const Bus bus = made(machine.bus);
    std::set<std::uint32_t> handles;
    for (const auto node : machine.bus.nodes()) {
        const PciFunction* const found = bus.find(machine.bus.handle(node));
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(addressText(*found), machine.bus.address(node));
        handles.insert(found->handle());
    }
    for (std::uint32_t handle = 0; handle <= 0xFFFF; ++handle)
        EXPECT_EQ(bus.find(handle) != nullptr, handles.contains(handle)) << handle;
    EXPECT_EQ(bus.find(0x10000 | machine.bus.handle(machine.port)), nullptr);
    EXPECT_EQ(bus.find(0xFFFFFFFF), nullptr);
}

TEST(Bus, FindsOnlyBridgesAsBridges) {
    const testsupport::machines::Switch machine;
    const Bus bus = made(machine.bus);
    EXPECT_NE(bus.findBridge(machine.bus.handle(machine.up)), nullptr);
    EXPECT_EQ(bus.findBridge(machine.bus.handle(machine.card)), nullptr);
    EXPECT_EQ(bus.findBridge(0x0001), nullptr);
}

TEST(Bus, ParentOfABusIsTheBridgeAboveIt) {
    const testsupport::machines::Switch machine;
    const Bus bus = made(machine.bus);
    for (const auto node : {machine.port, machine.up, machine.downA, machine.downB,
                            machine.conventional, machine.otherPort}) {
        const PciFunction* const parent = bus.parentOfBus(machine.bus.secondaryBus(node));
        ASSERT_NE(parent, nullptr);
        EXPECT_EQ(parent->handle(), machine.bus.handle(node));
    }
    EXPECT_EQ(bus.parentOfBus(0), nullptr);
    EXPECT_EQ(bus.parentOfBus(0x40), nullptr);
    EXPECT_EQ(bus.parentOfBus(0xFF), nullptr);
}

TEST(Bus, ListsBridgesInAscendingOrder) {
    const testsupport::machines::Switch machine;
    const Bus bus = made(machine.bus);
    EXPECT_THAT(bus.bridges(), ElementsAre(0x00E0, 0x00F0, 0x0100, 0x0208, 0x0210, 0x4019));
    EXPECT_THAT(bus.bridgesOn(0), ElementsAre(0x00E0, 0x00F0));
    EXPECT_THAT(bus.bridgesOn(1), ElementsAre(0x0100));
    EXPECT_THAT(bus.bridgesOn(2), ElementsAre(0x0208, 0x0210));
    EXPECT_THAT(bus.bridgesOn(3), IsEmpty());
    EXPECT_THAT(bus.bridgesOn(0x40), ElementsAre(0x4019));
    EXPECT_THAT(bus.bridgesOn(0xFF), IsEmpty());
}

TEST(Bus, ListsChildrenOfABridge) {
    const testsupport::machines::Switch machine;
    const Bus bus = made(machine.bus);
    EXPECT_THAT(bus.childrenOf(*bus.find(0x00E0)), ElementsAre(0x0100));
    EXPECT_THAT(bus.childrenOf(*bus.find(0x0100)), ElementsAre(0x0208, 0x0210));
    EXPECT_THAT(bus.childrenOf(*bus.find(0x0208)), IsEmpty());
}

TEST(Bus, ListsFunctionsOfABus) {
    const testsupport::machines::Switch machine;
    const Bus bus = made(machine.bus);
    EXPECT_EQ(bus.functionsOn(0).size(), 3U);
    EXPECT_EQ(bus.functionsOn(3).size(), 2U);
    EXPECT_EQ(bus.functionsOn(3)[1].handle(), machine.bus.handle(machine.second));
    EXPECT_THAT(bus.functionsOn(5), IsEmpty());
    EXPECT_EQ(bus.functionsOn(0x41).size(), 1U);
}

TEST(Bus, FindsBridgesByAllFourIdentifiers) {
    const testsupport::machines::Switch machine;
    const Bus bus = made(machine.bus);
    EXPECT_THAT(bus.bridgesWithIds({0x10B5, 0x8609, 0x1234, 0x0002}), ElementsAre(0x0208, 0x0210));
    EXPECT_THAT(bus.bridgesWithIds({0x10B5, 0x8609, 0x1234, 0x0001}), ElementsAre(0x0100));
    EXPECT_THAT(bus.bridgesWithIds({0x8086, 0xA110, 0x1043, 0x836B}), ElementsAre(0x00E0, 0x4019));
    EXPECT_THAT(bus.bridgesWithIds({0x8086, 0x244E, 0, 0}), ElementsAre(0x00F0));
    EXPECT_THAT(bus.bridgesWithIds({0x10B4, 0x8609, 0x1234, 0x0002}), IsEmpty());
    EXPECT_THAT(bus.bridgesWithIds({0x10B5, 0x8608, 0x1234, 0x0002}), IsEmpty());
    EXPECT_THAT(bus.bridgesWithIds({0x10B5, 0x8609, 0x1235, 0x0002}), IsEmpty());
    EXPECT_THAT(bus.bridgesWithIds({0x10B5, 0x8609, 0x1234, 0x0003}), IsEmpty());
    EXPECT_THAT(bus.bridgesWithIds({0x1172, 0xE001, 0x1234, 0x0010}), IsEmpty()) << "no bridge";
}

TEST(Bus, RootBusesHaveFunctionsAndNoParent) {
    const testsupport::machines::Switch machine;
    EXPECT_THAT(made(machine.bus).rootBuses(), ElementsAre(0, 0x40));
    const Bus orphans({endpoint(9, 0), bridge(3, 0, 4), endpoint(4, 0), bridge(3, 1, 200)},
                      placeOf);
    EXPECT_THAT(orphans.rootBuses(), ElementsAre(3, 9));
    const Bus last({endpoint(255, 0)}, placeOf);
    EXPECT_THAT(last.rootBuses(), ElementsAre(255));
}

TEST(Bus, SecondaryBus0MeansNothingBelow) {
    const Bus bus({endpoint(0, 0), bridge(0, 1, 0)}, placeOf);
    EXPECT_EQ(bus.parentOfBus(0), nullptr);
    EXPECT_THAT(bus.rootBuses(), ElementsAre(0));
    EXPECT_THAT(bus.childrenOf(*bus.find(8)), IsEmpty());
}

TEST(Bus, LowerOfTwoBridgesIsTheParent) {
    const Bus bus({bridge(0, 5, 2), bridge(0, 3, 2), bridge(2, 0, 3)}, placeOf);
    ASSERT_NE(bus.parentOfBus(2), nullptr);
    EXPECT_EQ(bus.parentOfBus(2)->device, 3);
    EXPECT_THAT(bus.childrenOf(*bus.find(0x18)), ElementsAre(0x200));
    EXPECT_THAT(bus.childrenOf(*bus.find(0x28)), IsEmpty());
}

TEST(Bus, RefusesTwoFunctionsAtOneAddressNamingTheLater) {
    EXPECT_EQ(refusal({endpoint(0, 1, 1), endpoint(0, 2, 2), endpoint(0, 1, 3)}),
              "line 3: a second function at 00:01.0");
}

TEST(Bus, RefusesEveryCycle) {
    EXPECT_EQ(refusal({bridge(1, 0, 1, 5)}), "line 5: bridges form a cycle through 01:00.0");
    EXPECT_EQ(refusal({bridge(1, 0, 2, 5), bridge(2, 0, 1, 6)}),
              "line 6: bridges form a cycle through 02:00.0");
    EXPECT_EQ(refusal({bridge(1, 0, 2, 5), bridge(2, 0, 3, 6), bridge(3, 0, 1, 7)}),
              "line 7: bridges form a cycle through 03:00.0");
    // Below a sound bridge, and through one that is not the parent of its secondary bus.
    EXPECT_EQ(refusal({bridge(0, 0, 1, 4), bridge(1, 0, 2, 5), bridge(2, 1, 1, 6)}),
              "line 6: bridges form a cycle through 02:01.0");
    EXPECT_EQ(refusal({bridge(255, 0, 254, 1), bridge(254, 31, 255, 2)}),
              "line 1: bridges form a cycle through ff:00.0");
}

TEST(Bus, ManyWaysDownAreNoCycle) {
    // Every bus has two bridges to the next one: 2^254 ways, none of which comes back.
    std::vector<PciFunction> functions;
    for (unsigned bus = 0; bus < 255; ++bus) {
        functions.push_back(
            bridge(static_cast<std::uint8_t>(bus), 0, static_cast<std::uint8_t>(bus + 1)));
        functions.push_back(
            bridge(static_cast<std::uint8_t>(bus), 1, static_cast<std::uint8_t>(bus + 1)));
    }
    EXPECT_EQ(refusal(functions), "accepted");
}

TEST(Bus, KeepsWhatItHandedOutWhenMoved) {
    const testsupport::machines::Switch machine;
    Bus first = made(machine.bus);
    const PciFunction* const port = first.find(0x00E0);
    const Bus second = std::move(first);
    EXPECT_EQ(second.find(0x00E0), port);
}

} // namespace
