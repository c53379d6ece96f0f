// Sessions: what they read and when, and what a bad one is answered.
#include "platform/utf8Path.h"
#include "tests/zopcibrd/bridgeLibrary.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using zopcibrdtest::kUntouched;

class Sessions : public zopcibrdtest::WithLibrary {
protected:
    std::uint32_t bridgesOn(std::uint32_t session, std::uint8_t bus) const {
        std::uint32_t count = 0;
        (void)library.GetBusChildren(session, bus, nullptr, &count);
        return count;
    }
};

TEST_F(Sessions, OpensADump) {
    const testsupport::machines::Switch machine;
    const std::uint32_t session = open(machine.bus);
    EXPECT_EQ(bridgesOn(session, 2), 2U);
    EXPECT_EQ(library.CloseSession(session), 0);
}

TEST_F(Sessions, OpensAFileOfAnyName) {
    const testsupport::machines::Switch machine;
    const auto file = folder.file("Stra\xC3\x9F"
                                  "e \xE2\x82\xAC.txt",
                                  machine.bus.dump());
    std::uint32_t session = kUntouched;
    ASSERT_EQ(open(platform::utf8Text(file), session), 0);
    EXPECT_EQ(bridgesOn(session, 2), 2U);
}

TEST_F(Sessions, IgnoreTheOpenOption) {
    const testsupport::machines::Switch machine;
    const testsupport::EnvironmentValue variable(
        "TAV_PCI_DUMP", folder.file("bus.txt", machine.bus.dump()).string());
    std::uint32_t session = kUntouched;
    EXPECT_EQ(library.OpenSession(0xFFFFFFFF, &session), 0);
    EXPECT_EQ(bridgesOn(session, 2), 2U);
}

TEST_F(Sessions, NeedSomewhereToPutTheHandle) {
    const testsupport::EnvironmentValue variable("TAV_PCI_DUMP", folder.path().string());
    EXPECT_EQ(library.OpenSession(0, nullptr), kPciBrdErrInvalidArgument);
}

TEST_F(Sessions, BusThatCannotBeReadIsRefused) {
    std::uint32_t session = kUntouched;
    EXPECT_EQ(open((folder.path() / "missing").string(), session), kPciBrdErrNoBus);
    EXPECT_EQ(open(folder.path().string(), session), kPciBrdErrNoBus);
    EXPECT_EQ(open(folder.file("bus.txt", "00:01.0\n").string(), session), kPciBrdErrNoBus);
    testsupport::machines::Switch machine;
    machine.bus.setSecondaryBus(machine.downA, 1);
    EXPECT_EQ(open(folder.file("bus.txt", machine.bus.dump()).string(), session), kPciBrdErrNoBus);
    EXPECT_EQ(open(folder.file("bus.txt", "no dump\n").string(), session), kPciBrdErrNoBus);
    EXPECT_EQ(session, kUntouched);
}

TEST_F(Sessions, AnEmptyBusIsABus) {
    std::uint32_t session = kUntouched;
    ASSERT_EQ(open(folder.file("bus.txt", "").string(), session), 0);
    std::uint32_t count = kUntouched;
    EXPECT_EQ(library.GetRootBuses(session, nullptr, &count), 0);
    EXPECT_EQ(count, 0U);
}

TEST_F(Sessions, AnswerFromWhatIsLeftOfADamagedBus) {
    testsupport::machines::Switch machine;
    machine.bus.poke(machine.up, 0, {0xFF, 0xFF});
    const auto loop = machine.bus.configSpace(machine.downA).at(0x34);
    machine.bus.poke(machine.downA, loop + 1U, {loop});
    const std::uint32_t session = open(machine.bus);
    std::uint8_t roots[4] = {};
    std::uint32_t count = 4;
    ASSERT_EQ(library.GetRootBuses(session, roots, &count), 0);
    ASSERT_EQ(count, 3U);
    EXPECT_EQ(roots[1], 2) << "the bus below the bridge that does not answer";
    EXPECT_EQ(bridgesOn(session, 1), 0U);
    EXPECT_EQ(bridgesOn(session, 2), 2U);
    std::uint32_t bridge = kUntouched;
    EXPECT_EQ(library.FindBridgeByAddress(session, 1, 0, 0, &bridge), kPciBrdErrNotFound);
    EXPECT_EQ(library.FindParentBridgeForBus(session, 2, &bridge), kPciBrdErrNotFound);
    EXPECT_EQ(library.FindBridgeBySlotPath(session, "MR02:08", &bridge), 0);
    EXPECT_EQ(bridge, machine.bus.handle(machine.downA));
}

TEST_F(Sessions, ReadTheBusOnce) {
    const testsupport::machines::Switch machine;
    const std::uint32_t session = open(machine.bus);
    std::filesystem::remove(folder.path() / "bus.txt");
    EXPECT_EQ(bridgesOn(session, 2), 2U);
    std::uint32_t again = kUntouched;
    EXPECT_EQ(open((folder.path() / "bus.txt").string(), again), kPciBrdErrNoBus);
}

TEST_F(Sessions, SeveralAreOpenAtOnce) {
    const testsupport::machines::Switch machine;
    const std::uint32_t first = open(machine.bus);
    const std::uint32_t second = open(testsupport::BusBuilder());
    EXPECT_NE(first, second);
    EXPECT_EQ(bridgesOn(first, 2), 2U);
    EXPECT_EQ(bridgesOn(second, 2), 0U);
    EXPECT_EQ(library.CloseSession(first), 0);
    std::uint32_t count = kUntouched;
    EXPECT_EQ(library.GetRootBuses(second, nullptr, &count), 0);
    EXPECT_EQ(library.GetRootBuses(first, nullptr, &count), kPciBrdErrInvalidArgument);
}

TEST_F(Sessions, HandlesAreNotUsedAgainAtOnce) {
    std::set<std::uint32_t> handles;
    for (int i = 0; i < 100; ++i) {
        const std::uint32_t session = open(testsupport::BusBuilder());
        EXPECT_NE(session, 0xFFFFFFFF);
        EXPECT_TRUE(handles.insert(session).second);
        EXPECT_EQ(library.CloseSession(session), 0);
        EXPECT_EQ(library.CloseSession(session), kPciBrdErrInvalidArgument);
    }
}

TEST_F(Sessions, SessionThatIsNotOpenIsABadArgument) {
    const testsupport::machines::Switch machine;
    const std::uint32_t closed = open(machine.bus);
    ASSERT_EQ(library.CloseSession(closed), 0);
    for (const std::uint32_t bad : {closed, 0U, 0xFFFFFFFFU, closed + 1}) {
        std::uint32_t value = kUntouched;
        std::uint32_t list[4] = {};
        std::uint8_t bytes[4] = {};
        std::uint16_t ids[4] = {};
        char text[100] = "";
        EXPECT_EQ(library.CloseSession(bad), kPciBrdErrInvalidArgument);
        EXPECT_EQ(library.FindBridgesByPciIds(bad, 0, 0, 0, 0, list, &value),
                  kPciBrdErrInvalidArgument);
        EXPECT_EQ(library.FindBridgeByAddress(bad, 0, 0x1C, 0, &value), kPciBrdErrInvalidArgument);
        EXPECT_EQ(library.FindBridgeBySlotPath(bad, "MR00:E0", &value), kPciBrdErrInvalidArgument);
        EXPECT_EQ(library.FindParentBridgeForBus(bad, 1, &value), kPciBrdErrInvalidArgument);
        EXPECT_EQ(library.GetBridgeParent(bad, 0x100, &value), kPciBrdErrInvalidArgument);
        EXPECT_EQ(library.GetBridgeChildren(bad, 0xE0, list, &value), kPciBrdErrInvalidArgument);
        EXPECT_EQ(library.GetBusChildren(bad, 0, list, &value), kPciBrdErrInvalidArgument);
        EXPECT_EQ(library.GetRootBuses(bad, bytes, &value), kPciBrdErrInvalidArgument);
        EXPECT_EQ(library.GetBridgeAddress(bad, 0xE0, &bytes[0], &bytes[1], &bytes[2]),
                  kPciBrdErrInvalidArgument);
        EXPECT_EQ(library.GetBridgeSlotPath(bad, 0xE0, text, &value), kPciBrdErrInvalidArgument);
        EXPECT_EQ(library.GetBridgeIds(bad, 0xE0, &ids[0], &ids[1], &ids[2], &ids[3]),
                  kPciBrdErrInvalidArgument);
        EXPECT_EQ(library.GetAttributeU32(bad, 0xE0, kPciBrdAttrSecondaryBus, &value),
                  kPciBrdErrInvalidArgument);
        EXPECT_EQ(library.OpenBridge(bad, 0xE0), kPciBrdErrInvalidArgument);
        EXPECT_EQ(library.CloseBridge(bad, 0xE0), kPciBrdErrInvalidArgument);
        EXPECT_EQ(library.SetAttributeU32(bad, 0xE0, 0, 0), kPciBrdErrUnavailable);
        EXPECT_EQ(library.EepromUpdate(bad, 0xE0, 0, 0, 0, 0, 0, nullptr), kPciBrdErrUnavailable);
        EXPECT_EQ(value, kUntouched);
    }
}

TEST_F(Sessions, MayBeUsedFromSeveralThreads) {
    const testsupport::machines::Switch machine;
    const testsupport::EnvironmentValue variable(
        "TAV_PCI_DUMP", folder.file("bus.txt", machine.bus.dump()).string());
    std::atomic<int> failures = 0;
    constexpr int kThreads = 4;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                std::uint32_t session = kUntouched;
                std::uint32_t bridge = kUntouched;
                if (library.OpenSession(0, &session) != 0 ||
                    library.FindBridgeByAddress(session, 2, 1, 0, &bridge) != 0 ||
                    bridge != 0x208 || library.CloseSession(session) != 0)
                    ++failures;
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(failures, 0);
}

// Every allocation of an opening fails once.
} // namespace
