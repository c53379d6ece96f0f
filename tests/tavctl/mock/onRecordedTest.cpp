// Boxes added to recorded machines that are not as most are.
#include "pcibus/dump.h"
#include "tavctl/mock/mock.h"
#include "tests/support/busBuilder.h"
#include "tests/support/describe.h"
#include "tests/support/fileFolder.h"
#include "tests/tavctl/sample.h"

#include <gmock/gmock.h>

namespace {

using namespace tavctl;
using testing::HasSubstr;
using testsupport::BusBuilder;

constexpr testsupport::Ids kPort{0x8086, 0x1234, 0, 0};

class OnRecorded : public testing::Test {
protected:
    // What mock makes of a box of the sample's simplest model in that place.
    std::string made(const std::string& machine, const std::string& place) {
        const std::string folder = tavctltest::kSampleDescriptions + "/PCI Hardware Descriptions/";
        const mock::Catalog catalog({folder + "tav-b3-switch-box.ini"});
        mock::Plan plan;
        mock::PlannedBox& box = plan.boxes.emplace_back();
        box.model = {"TAV-B3 Switch Box", "the model"};
        box.in = {place, place};
        const std::string file = folder_.write("machine.dump", machine);
        try {
            const mock::RecordedMachine on = mock::readRecordedMachine(file);
            const mock::MadeBus bus = mock::makeBus(plan, catalog, &on, "a test");
            isRenumbered_ = bus.isRenumbered;
            return bus.text;
        } catch (const FailureException& exception) {
            return exception.failure().sentence();
        }
    }

    static std::vector<std::string> functionsOf(const std::string& text) {
        return testsupport::describe(pcibus::parseDump(text, "made").functions());
    }

    testsupport::FileFolder folder_;
    bool isRenumbered_ = false;
};

TEST_F(OnRecorded, KeepsTheBytesOfWhatWasThere) {
    BusBuilder machine;
    const auto port = machine.rootPort(0, 2, 0, kPort);
    machine.poke(port, 0xC0, {0x12, 0x34});
    const std::string text = made(machine.dump(), "root");
    EXPECT_THAT(text, HasSubstr("\nc0: 12 34 "));
    EXPECT_THAT(functionsOf(text),
                testing::Contains(testsupport::describe(machine.functions())[0]));
    EXPECT_FALSE(isRenumbered_);
}

TEST_F(OnRecorded, KeepsOtherDomains) {
    BusBuilder machine;
    machine.rootPort(0, 2, 0, kPort);
    BusBuilder other;
    other.rootEndpoint(0, 9, 0, {0x1234, 0x5678, 0, 0});
    const std::string text = made(machine.dump({.domain = 0}) + other.dump({.domain = 1}), "root");
    EXPECT_THAT(text, HasSubstr("\n0000:00:02.0 0604: 8086:1234"));
    EXPECT_THAT(text, HasSubstr("\n0001:00:09.0 "));
}

TEST_F(OnRecorded, ConfiguresABridgeThatWasNot) {
    BusBuilder machine;
    const auto port = machine.rootPort(0, 2, 0, kPort);
    machine.setSecondaryBus(port, 0);
    machine.poke(port, 0x1A, {0});
    const std::string text = made(machine.dump(), "00:02.0");
    EXPECT_THAT(text, HasSubstr("# 01:00.0 TAV1: TAV-B3 Switch Box"));
    EXPECT_THAT(functionsOf(text)[0], HasSubstr("secondary 01"));
}

// Of a recording by an ordinary user only headers are known.
TEST_F(OnRecorded, AddsToHeaders) {
    BusBuilder machine;
    machine.rootPort(0, 2, 0, kPort);
    const std::string text = made(machine.dump({.bytes = testsupport::kHeaderBytes}), "00:02.0");
    EXPECT_THAT(text, HasSubstr("# 01:00.0 TAV1: TAV-B3 Switch Box"));
}

TEST_F(OnRecorded, RefusesWhatIsBelowACardBusBridge) {
    BusBuilder machine;
    const auto cardBus = machine.rootPort(0, 2, 0, kPort);
    machine.bridge(cardBus, 0, 0, {0x9999, 1, 0, 0});
    machine.poke(cardBus, 0x0E, {2});
    EXPECT_THAT(made(machine.dump(), "01:00.0"), HasSubstr("it is below a CardBus bridge"));
    EXPECT_THAT(made(machine.dump(), "root"), HasSubstr("TAV1: TAV-B3 Switch Box"));
}

TEST_F(OnRecorded, RefusesABridgeBesideTheParentOfItsBus) {
    BusBuilder machine;
    machine.rootPort(0, 2, 0, kPort);
    const auto second = machine.rootPort(0, 3, 0, kPort);
    machine.setSecondaryBus(second, 1);
    EXPECT_THAT(made(machine.dump(), "00:03.0"),
                HasSubstr("another bridge is the parent of the bus below it"));
}

// What is at the bridge's end is told as far as it says anything of its link.
TEST_F(OnRecorded, AddsBelowBridgesWithoutALink) {
    BusBuilder machine;
    const auto port = machine.rootPort(0, 2, 0, kPort);
    machine.poke(port, 0x06, {0});
    EXPECT_THAT(made(machine.dump(), "00:02.0"), HasSubstr("# 01:00.0 TAV1"));
    machine.poke(port, 0x06, {0x10});
    machine.poke(port, 0x34, {0x80});
    machine.poke(port, 0x80, {0x09, 0x80});
    EXPECT_THAT(made(machine.dump(), "00:02.0"), HasSubstr("# 01:00.0 TAV1"));
}

TEST_F(OnRecorded, RefusesWhatIsNoRecording) {
    EXPECT_THAT(made("00:02.0 nothing\n", "root"), HasSubstr("read the bus ("));
}

TEST_F(OnRecorded, RefusesAMachineWithoutBusNumbersLeft) {
    BusBuilder machine;
    auto bridge = machine.rootPort(0, 2, 0, kPort);
    for (unsigned i = 0; i < 253; ++i)
        bridge = machine.bridge(bridge, 0, 0, {0x9999, 1, 0, 0});
    EXPECT_THAT(made(machine.dump(), "root"), HasSubstr("the bus numbers do not last"));
}

} // namespace
