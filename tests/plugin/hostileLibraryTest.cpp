// The plug-in over bridge libraries that lack a function, fail, or change their answers. The
// scripted library passes on to the real one what it is not told to spoil.
#include "pciBrdWrapper/bridgeLibrary.h"
#include "tests/plugin/pluginCopy.h"
#include "tests/support/environmentValue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0::kBridgeSymbols;
using testplugin::kSampleDevices;
using testplugin::PluginCopy;
using testplugin::SampleMachine;
using testsupport::EnvironmentValue;
using testsupport::TemporaryFolder;

// A status of the bridge library that the plug-in knows nothing of.
constexpr std::int32_t kStatus = -313007;

// The sample machine behind a spoilt bridge library.
class HostileLibrary {
public:
    explicit HostileLibrary(const std::string& faults)
        : faults_("SCRIPTED_BRIDGE_FAULTS", faults),
          behind_("SCRIPTED_BRIDGE_BEHIND", ZOPCIBRD_FILE),
          calls_("SCRIPTED_BRIDGE_CALLS", callsFile()) {
        replaceBridgeLibrary(SCRIPTED_BRIDGE_FILE);
    }

    void replaceBridgeLibrary(const char* file) {
        fs::copy_file(file, plugin.bridgeLibrary(), fs::copy_options::overwrite_existing);
    }

    // Names of the functions called, in order.
    [[nodiscard]] std::vector<std::string> calls() const {
        std::ifstream stream(callsFile());
        std::vector<std::string> names;
        std::string name;
        for (std::string status; stream >> name >> status;)
            names.push_back(name);
        return names;
    }

    SampleMachine machine;
    PluginCopy plugin;

private:
    [[nodiscard]] std::string callsFile() const { return (folder_.path() / "calls").string(); }

    TemporaryFolder folder_;
    EnvironmentValue faults_;
    EnvironmentValue behind_;
    EnvironmentValue calls_;
};

TEST(HostileLibrary, UnspoiltItListsTheSampleMachine) {
    const HostileLibrary host("");
    EXPECT_EQ(host.plugin.initialize(), 0);
    EXPECT_EQ(host.plugin.countOrStatus(), kSampleDevices);
    EXPECT_THAT(host.calls(), testing::Not(testing::IsEmpty()));
}

// Two boxes "B3", one box "W7" on a bus with five bridges of its anchor's identifiers, of which the
// first is tried in vain, and the card "C1".
TEST(HostileLibrary, EachQuestionIsAskedAsOftenAsTheSearchAndTheWalkNeedIt) {
    const HostileLibrary host("");
    ASSERT_EQ(host.plugin.initialize(), 0);
    std::map<std::string, int> counts;
    for (const std::string& name : host.calls())
        ++counts[name];
    const std::map<std::string, int> needed{
        {"OpenSession", 1},
        // The anchor, and each described bridge of its identifiers: size and content.
        {"FindBridgesByPciIds", 2 * 2 + 2 * 5},
        // Each candidate's: size and content. The card's is that of the bridge above it.
        {"GetBridgeSlotPath", 2 * 2 + 2 * 2 + 2},
        {"FindParentBridgeForBus", 1},
        // The described bridges of the candidates of W7, and in the walks the reporting bridge, the
        // upstream port and the downstream ports.
        {"FindBridgeBySlotPath", (2 + 3) + 2 * (1 + 3) + (1 + 2) + (1 + 3)},
        // The anchors and upstream ports of the boxes, the reporting bridge of the card.
        {"GetBridgeAddress", 3 * 2 + 1},
        // A port's secondary bus; where labels go by width, also the width of the upstream port and
        // the width and speed of each port.
        {"GetAttributeU32", 2 * 3 + 2 + (1 + 3 * 3)},
        {"OpenBridge", 1 + 3},
        {"CloseBridge", 1 + 3},
        {"CloseSession", 1},
    };
    EXPECT_EQ(counts, needed);
}

TEST(HostileLibrary, WithoutTheSeventhFunctionNothingIsListed) {
    HostileLibrary host("");
    host.replaceBridgeLibrary(BRIDGE_WITHOUT_FILE);
    EXPECT_EQ(host.plugin.initialize(), -52005);
    EXPECT_EQ(host.plugin.countOrStatus(), kTavManErrSoftwareFault);
    EXPECT_EQ(host.calls(), std::vector<std::string>());
}

// What is left of the four devices when a function always fails: models whose way needs it are left
// out. A function that is not in the table is not called, or its failure does not matter.
TEST(HostileLibrary, EachFunctionFailingLeavesOutTheModelsThatNeedIt) {
    const std::map<std::string, std::int64_t> left{
        {"OpenSession", kTavManErrSoftwareFault}, // there is no list at all
        {"FindBridgesByPciIds", 1},               // the card, which is found by an endpoint
        {"FindParentBridgeForBus", 3},            // all but the card
        {"FindBridgeBySlotPath", 0},
        {"GetBridgeAddress", 0},
        {"GetBridgeSlotPath", 0},
        {"GetAttributeU32", 0},
        {"OpenBridge", 3}, // all but the box with a link width per label
    };
    std::size_t functions = 0;
    for (const auto& symbol : kBridgeSymbols) {
        const std::string name = std::string(symbol.name).substr(std::string("ZoPciBrd_").size());
        const HostileLibrary host(name + "=" + std::to_string(kStatus));
        const bool session = name == "OpenSession";
        EXPECT_EQ(host.plugin.initialize(), session ? kStatus : 0) << name;
        const auto expected = left.find(name);
        const std::int64_t devices =
            expected == left.end() ? std::int64_t{kSampleDevices} : expected->second;
        EXPECT_EQ(host.plugin.countOrStatus(), devices) << name;
        EXPECT_EQ(host.machine.names().empty(), devices <= 0) << name;
        ++functions;
    }
    EXPECT_EQ(functions, 18U);
}

TEST(HostileLibrary, NthCallFailingCostsAtMostOneModel) {
    const HostileLibrary whole("");
    ASSERT_EQ(whole.plugin.initialize(), 0);
    const std::vector<std::string> calls = whole.calls();
    ASSERT_EQ(calls.front(), "OpenSession");
    ASSERT_EQ(calls.back(), "CloseSession");
    // Two sample models with one device each and one with two, which fails as a whole or keeps the
    // first of its devices.
    for (std::size_t nth = 1; nth <= calls.size(); ++nth) {
        const HostileLibrary host("*#" + std::to_string(nth) + "=" + std::to_string(kStatus));
        EXPECT_EQ(host.plugin.initialize(), nth == 1 ? kStatus : 0) << nth;
        if (nth > 1) {
            EXPECT_GE(host.plugin.countOrStatus(), 2) << nth << " " << calls[nth - 1];
            EXPECT_LE(host.plugin.countOrStatus(), kSampleDevices) << nth;
        }
        EXPECT_EQ(host.calls().back(), nth == 1 ? "OpenSession" : "CloseSession") << nth;
    }
    EXPECT_GT(calls.size(), 50U);
}

TEST(HostileLibrary, ListsThatShrinkBetweenTheCallsLeaveOutTheModelsThatMetThem) {
    const HostileLibrary host("FindBridgesByPciIds=shrink");
    EXPECT_EQ(host.plugin.initialize(), 0);
    EXPECT_EQ(host.plugin.countOrStatus(), 1); // handle 0 is no bridge; the card needs no list
}

TEST(HostileLibrary, ListsOfAbsurdLengthLeaveOutTheModelsThatMetThem) {
    const HostileLibrary host("FindBridgesByPciIds=absurd");
    EXPECT_EQ(host.plugin.initialize(), 0);
    EXPECT_EQ(host.plugin.countOrStatus(), 1);
    // Each of the two other models asked for the length and for the list once, if there was room.
    const auto calls = host.calls();
    EXPECT_LE(std::count(calls.begin(), calls.end(), "FindBridgesByPciIds"), 4);
}

TEST(HostileLibrary, TextsWithoutAnEndAreReadToTheirBuffersEnd) {
    const HostileLibrary host("GetBridgeSlotPath=endless");
    EXPECT_EQ(host.plugin.initialize(), 0);
    EXPECT_LE(host.plugin.countOrStatus(), kSampleDevices);
}

TEST(HostileLibrary, TextsOfAbsurdLengthCostNoMemory) {
    const HostileLibrary host("GetBridgeSlotPath=absurd");
    EXPECT_EQ(host.plugin.initialize(), 0);
    EXPECT_LE(host.plugin.countOrStatus(), kSampleDevices);
}

} // namespace
