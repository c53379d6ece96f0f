// The scripted bridge library where no test reaches its script: faults from the environment, over
// the substitute bridge library on a recorded bus.
#include "tests/pciBrdWrapper/scriptedLibrary.h"

#include "pciBrdWrapper/cPciBrdWrapper_ex.h"
#include "tests/pciBrdWrapper/raised.h"
#include "tests/support/environmentValue.h"
#include "tests/support/machines.h"
#include "tests/support/temporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <new>
#include <stdexcept>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;
using scripted::Fault;
using scripted::FaultKind;
using scripted::readFaults;
using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::EnvironmentValue;

TEST(Faults, AreReadWithFunctionCallAndWhatHappens) {
    const std::vector<Fault> faults =
        readFaults("GetBridgeIds=-313001;GetBridgeChildren=shrink;OpenBridge#3=7;*#17=absurd;"
                   "GetBridgeSlotPath=endless;");
    ASSERT_EQ(faults.size(), 5U);
    EXPECT_EQ(faults[0].function, BridgeFunction::GetBridgeIds);
    EXPECT_EQ(faults[0].nth, 0U);
    EXPECT_EQ(faults[0].kind, FaultKind::status);
    EXPECT_EQ(faults[0].status, -313001);
    EXPECT_EQ(faults[1].function, BridgeFunction::GetBridgeChildren);
    EXPECT_EQ(faults[1].kind, FaultKind::shrink);
    EXPECT_EQ(faults[2].nth, 3U);
    EXPECT_EQ(faults[2].status, 7);
    EXPECT_EQ(faults[3].function, std::nullopt);
    EXPECT_EQ(faults[3].nth, 17U);
    EXPECT_EQ(faults[3].kind, FaultKind::absurd);
    EXPECT_EQ(faults[4].kind, FaultKind::endless);
    EXPECT_THAT(readFaults(""), IsEmpty());
}

TEST(Faults, ThatCannotBeReadAreRefused) {
    for (const char* text : {"GetBridgeIds", "GetBridgeId=-1", "OpenBridge#=-1", "OpenBridge#x=-1",
                             "OpenBridge=", "OpenBridge=shrunk", "OpenBridge=-1x", ";", "=-1",
                             "ZoPciBrd_OpenBridge=-1"})
        EXPECT_THROW(readFaults(text), std::invalid_argument) << text;
}

// Nobody else keeps the library loaded, so each wrapper reads the environment afresh.
class FaultyBus : public testing::Test {
protected:
    std::unique_ptr<cPciBrdWrapper_ex> open(const std::string& faults) {
        faults_.reset(); // restores what was there before the next one looks
        faults_ = std::make_unique<EnvironmentValue>("SCRIPTED_BRIDGE_FAULTS", faults);
        nZOQUIL000::tErrorStatus status;
        auto wrapper = std::make_unique<cPciBrdWrapper_ex>(status);
        if (status.failed())
            throw std::runtime_error(status.textOrEmpty());
        wrapper->OpenSession(0);
        return wrapper;
    }
    std::uint32_t upstreamPort(cPciBrdWrapper_ex& wrapper) {
        std::uint32_t bridge = 0;
        EXPECT_EQ(wrapper.FindBridgeByAddress(1, 0, 0, bridge), 0);
        return bridge;
    }
    void forgetCalls() const { std::filesystem::remove(callsFile_); }
    [[nodiscard]] std::vector<std::string> callsOnUnloading() const {
        std::ifstream file(callsFile_);
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);)
            lines.push_back(line);
        return lines;
    }

private:
    testsupport::TemporaryFolder folder_;
    testsupport::machines::Switch machine_;
    std::string callsFile_ = (folder_.path() / "calls").string();
    EnvironmentValue dump_{"TAV_PCI_DUMP",
                           folder_.file("machine.dump", machine_.bus.dump()).string()};
    EnvironmentValue behind_{"SCRIPTED_BRIDGE_BEHIND", TAV_SUBSTITUTE_LIBRARY};
    EnvironmentValue calls_{"SCRIPTED_BRIDGE_CALLS", callsFile_};
    std::unique_ptr<EnvironmentValue> faults_;
};

TEST_F(FaultyBus, AnswersAsTheLibraryBehindWhereNoFaultIs) {
    auto wrapper = open("");
    const std::uint32_t up = upstreamPort(*wrapper);
    tBridgeList children;
    EXPECT_EQ(wrapper->GetBridgeChildren(up, children), 0);
    EXPECT_THAT(children, ElementsAre(0x0208, 0x0210));
    std::uint16_t vendor = 0;
    std::uint16_t device = 0;
    EXPECT_EQ(wrapper->GetBridgeIds(up, &vendor, &device, nullptr, nullptr), 0);
    EXPECT_EQ(vendor, 0x10B5);
    EXPECT_EQ(device, 0x8609);
    cPciBrdWrapper_ex::cSlotPath path;
    EXPECT_EQ(wrapper->GetBridgeSlotPath(up, path), 0);
    EXPECT_THAT(path.hops, ElementsAre(0x00, 0xE0));
    std::uint32_t again = 0;
    EXPECT_EQ(wrapper->FindBridgeBySlotPath(path, again), 0);
    EXPECT_EQ(again, up);
}

TEST_F(FaultyBus, ShrinksListsBetweenTheTwoCalls) {
    auto wrapper = open("GetBridgeChildren=shrink;GetRootBuses=shrink");
    tBridgeList children;
    EXPECT_EQ(wrapper->GetBridgeChildren(upstreamPort(*wrapper), children), 0);
    EXPECT_THAT(children, ElementsAre(0x0208, 0));
    tBusList buses;
    EXPECT_EQ(wrapper->GetRootBuses(buses), 0);
    EXPECT_THAT(buses, ElementsAre(0, 0));
}

TEST_F(FaultyBus, FailsTheNthCallOfAFunctionOnly) {
    auto wrapper = open("FindBridgeByAddress#2=-77001");
    std::uint32_t bridge = 0;
    EXPECT_EQ(wrapper->FindBridgeByAddress(1, 0, 0, bridge), 0);
    EXPECT_EQ(outcomeOf([&] { return wrapper->FindBridgeByAddress(1, 0, 0, bridge); }).status,
              -77001);
    EXPECT_EQ(wrapper->FindBridgeByAddress(1, 0, 0, bridge), 0);
}

TEST_F(FaultyBus, FailsTheNthCallOfAllAndTellsWhichItWas) {
    for (int nth = 1; nth <= 5; ++nth) {
        forgetCalls();
        std::vector<std::string> expected{"OpenSession 0", "FindBridgeByAddress 0",
                                          "GetBridgeChildren -313002", "GetBridgeChildren 0",
                                          "CloseSession 0"};
        expected.resize(static_cast<std::size_t>(nth));
        std::string& last = expected.back();
        last = last.substr(0, last.find(' ')) + " -77001";
        if (nth > 1 && nth < 5)
            expected.emplace_back("CloseSession 0");

        const Raised outcome = outcomeOf([&] {
            auto wrapper = open("*#" + std::to_string(nth) + "=-77001");
            tBridgeList children;
            wrapper->GetBridgeChildren(upstreamPort(*wrapper), children);
            return 0;
        });
        EXPECT_EQ(outcome.raised, nth < 5) << nth;
        EXPECT_EQ(outcome.status, nth < 5 ? -77001 : 0) << nth;
        EXPECT_EQ(callsOnUnloading(), expected) << nth;
    }
}

TEST_F(FaultyBus, WritesTextWithoutAnEnd) {
    auto wrapper = open("GetBridgeSlotPath=endless");
    cPciBrdWrapper_ex::cSlotPath path;
    // "MR00:00,E0" and, where the zero stood, one more digit, which the hop does not reach.
    EXPECT_EQ(wrapper->GetBridgeSlotPath(upstreamPort(*wrapper), path), 0);
    EXPECT_THAT(path.hops, ElementsAre(0x00, 0xE0));
}

TEST_F(FaultyBus, AnnouncesTextOfAbsurdLength) {
    auto wrapper = open("GetBridgeSlotPath=absurd");
    const std::uint32_t up = upstreamPort(*wrapper);
    cPciBrdWrapper_ex::cSlotPath path;
    try {
        EXPECT_EQ(wrapper->GetBridgeSlotPath(up, path), 0);
        EXPECT_THAT(path.hops, ElementsAre(0x00, 0xE0));
    } catch (const std::bad_alloc&) {
        EXPECT_THAT(path.hops, IsEmpty());
    }
}

using FaultyBusDeathTest = FaultyBus;

TEST_F(FaultyBusDeathTest, FaultsThatCannotBeReadEndTheProcess) {
    EXPECT_DEATH(open("OpenBridge"), "scripted bridge library: not a fault: \"OpenBridge\"");
}

TEST_F(FaultyBusDeathTest, LibraryBehindThatIsNotThereEndsTheProcess) {
    const EnvironmentValue behind("SCRIPTED_BRIDGE_BEHIND", "/no/such/library.so");
    EXPECT_DEATH(open(""), "scripted bridge library: cannot load what is behind: ");
}

} // namespace
