// Slot path texts out of device trees, whole, broken and endless.
#include "quil/slotPathDerivation.h"

#include "tests/quil/fakeDevices.h"
#include "tests/support/allocationFaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using nZOQUIL000::tErrorStatus;
using testing::ElementsAre;
using testing::StartsWith;

std::string record(const char* constant, int line) {
    return std::string(R"({"error_constant":")") + constant +
           R"(","file":"zoquil\\protons\\enumeration\\windows\\winpcislotpath","line":)" +
           std::to_string(line) + R"(,"component":"zotavpci"})";
}

// The machine 1 with the root bridges 10, 11 (not of PCI), 12 and 13; below 12 the bridge 20 and
// below that the card 30.
class Derivation : public testing::Test {
protected:
    void SetUp() override {
        auto& nodes = tree_.nodes;
        nodes[1] = {"ROOT", "ROOT\\1", 0, std::nullopt, 10};
        nodes[10] = {"ACPI", "ACPI\\PNP0A08\\0", 0, 1, std::nullopt, 11};
        nodes[11] = {"ACPI", "ACPI\\PNP0C0F\\1", 0, 1, std::nullopt, 12};
        nodes[12] = {"ACPI", "ACPI\\PNP0A08\\1", 0, 1, 20, 13};
        nodes[13] = {"ACPI", "ACPI\\PNP0A08\\2", 0, 1};
        nodes[20] = {"PCI", "PCI\\20", 0x001C0000, 12};
        nodes[30] = {"PCI", "PCI\\30", 0x00000000, 20};
    }
    std::string derive(platform::DeviceNode node) {
        tErrorStatus status;
        std::string text = "poison";
        deriveSlotPath(tree_, node, text, status);
        EXPECT_EQ(status.code, 0) << status.textOrEmpty();
        return text;
    }
    void expectFailure(platform::DeviceNode node, int line) {
        tErrorStatus status;
        std::string text = "kept";
        deriveSlotPath(tree_, node, text, status);
        EXPECT_EQ(status.code, -52006);
        EXPECT_EQ(status.textOrEmpty(), record("kQuilErrDeviceQuery", line));
        EXPECT_EQ(text, "kept");
    }
    // Fails at a line of no fixed number.
    void expectEndless(platform::DeviceNode node) {
        tErrorStatus status;
        std::string text = "kept";
        deriveSlotPath(tree_, node, text, status);
        EXPECT_EQ(status.code, -52006);
        EXPECT_EQ(text, "kept");
    }

    fakes::Tree tree_;
};

TEST_F(Derivation, NumberOfTheRootBridgeThenOneHopALevel) {
    EXPECT_EQ(derive(30), "0000:01:E0:00");
    EXPECT_EQ(derive(20), "0000:01:E0");
}

TEST_F(Derivation, AsksTheTreeInThisOrder) {
    derive(30);
    EXPECT_THAT(tree_.log,
                ElementsAre("enumerator 30", "address 30", "parent 30", "identifier 20", "open 20",
                            "enumerator 20", "address 20", "parent 20", "identifier 12", "open 12",
                            "enumerator 12", "parent 12", "child 1", "identifier 10", "sibling 10",
                            "identifier 11", "sibling 11"));
}

TEST_F(Derivation, HopIsDeviceTimesEightPlusFunction) {
    tree_.nodes[30].address = 0x001F0007;
    EXPECT_EQ(derive(30), "0000:01:E0:FF");
    tree_.nodes[30].address = 0xFFE2FFF9; // bits beyond the numbers do not count
    EXPECT_EQ(derive(30), "0000:01:E0:11");
}

TEST_F(Derivation, CaseOfNamesDoesNotCount) {
    tree_.nodes[30].enumerator = "pci";
    tree_.nodes[20].enumerator = "Pci";
    tree_.nodes[12].enumerator = "acpi";
    tree_.nodes[10].identifier = "acpi\\pnp0a08\\0";
    EXPECT_EQ(derive(30), "0000:01:E0:00");
}

TEST_F(Derivation, BothKindsOfRootBridgesCount) {
    tree_.nodes[10].identifier = "ACPI\\PNP0A03";
    EXPECT_EQ(derive(20), "0000:01:E0");
    for (const char* other :
         {"ACPI\\PNP0A0", "ACPI\\PNP0A04\\0", "XACPI\\PNP0A08", "ACPI/PNP0A08", ""}) {
        tree_.nodes[10].identifier = other;
        EXPECT_EQ(derive(20), "0000:00:E0") << other;
    }
}

TEST_F(Derivation, SiblingsBehindTheRootBridgeDoNotCount) {
    tree_.nodes[20].parent = 10;
    EXPECT_EQ(derive(20), "0000:00:E0");
    tree_.nodes[20].parent = 13;
    EXPECT_EQ(derive(20), "0000:02:E0");
}

TEST_F(Derivation, RootThatIsNotOfTheFirmwareIsNumberZero) {
    tree_.nodes[12].enumerator = "BUS";
    EXPECT_EQ(derive(30), "0000:00:E0:00");
    EXPECT_EQ(tree_.calls, 11) << "siblings are not asked for";
    tree_.nodes[12].enumerator = "PCIX";
    EXPECT_EQ(derive(30), "0000:00:E0:00");
    tree_.nodes[12].enumerator = "an enumerator name beyond the buffer";
    EXPECT_EQ(derive(30), "0000:00:E0:00");
}

TEST_F(Derivation, WithoutAParentOnlyTheHopRemains) {
    tree_.nodes[20].parent = std::nullopt;
    EXPECT_EQ(derive(30), ":E0:00");
    EXPECT_EQ(derive(20), ":E0");
}

TEST_F(Derivation, RootWithoutAParentOrAFirstChildIsNumberZero) {
    tree_.nodes[12].parent = std::nullopt;
    EXPECT_EQ(derive(20), "0000:00:E0");
    tree_.nodes[12].parent = 1;
    tree_.nodes[1].firstChild = std::nullopt;
    EXPECT_EQ(derive(20), "0000:00:E0");
}

TEST_F(Derivation, WalkThatEndsEarlyCountsWhatItSaw) {
    tree_.nodes[11].nextSibling = std::nullopt;
    EXPECT_EQ(derive(20), "0000:01:E0");
    tree_.nodes[10].nextSibling = std::nullopt;
    tree_.nodes[10].identifier = "other";
    EXPECT_EQ(derive(20), "0000:00:E0");
}

TEST_F(Derivation, NumberOfTheRootBridgeHasTwoDigitsOrMore) {
    platform::DeviceNode previous = 11;
    for (unsigned i = 0; i < 300; ++i) {
        const platform::DeviceNode node = 1000U + i;
        tree_.nodes[node] = {"ACPI", "ACPI\\PNP0A03\\" + std::to_string(i), 0, 1};
        tree_.nodes[previous].nextSibling = node;
        previous = node;
    }
    tree_.nodes[previous].nextSibling = 12;
    EXPECT_EQ(derive(20), "0000:12D:E0");
}

TEST_F(Derivation, OnlyPciDevicesHaveASlotPath) {
    expectFailure(12, 134);
    expectFailure(1, 134);
    tree_.nodes[30].enumerator = "USB";
    expectFailure(30, 134);
    tree_.nodes[30].enumerator = "";
    expectFailure(30, 134);
}

TEST_F(Derivation, AnyQueryMayFail) {
    struct Case {
        int line;         // 0: not a failure
        const char* text; // then
    };
    const Case cases[] = {
        {134, ""},            // enumerator 30
        {159, ""},            // address 30
        {0, ":00"},           // parent 30
        {185, ""},            // identifier 20
        {179, ""},            // open 20
        {0, "0000:00:00"},    // enumerator 20: taken for the root
        {159, ""},            // address 20
        {0, ":E0:00"},        // parent 20
        {185, ""},            // identifier 12
        {179, ""},            // open 12
        {0, "0000:00:E0:00"}, // enumerator 12
        {0, "0000:00:E0:00"}, // parent 12
        {0, "0000:00:E0:00"}, // child 1
        {0, "0000:00:E0:00"}, // identifier 10
        {0, "0000:01:E0:00"}, // sibling 10
        {0, "0000:01:E0:00"}, // identifier 11
        {0, "0000:01:E0:00"}, // sibling 11
    };
    int call = 0;
    for (const Case& expected : cases) {
        tree_.calls = 0;
        tree_.failingCall = ++call;
        if (expected.line != 0) {
            expectFailure(30, expected.line);
            EXPECT_EQ(tree_.calls, call) << "nothing is asked after the failure";
        } else {
            EXPECT_EQ(derive(30), expected.text) << call;
        }
    }
    tree_.calls = 0;
    tree_.failingCall = 0;
    EXPECT_EQ(derive(30), "0000:01:E0:00");
    EXPECT_EQ(tree_.calls, call) << "every call has had its turn";
}

TEST_F(Derivation, DeviceIdentifierBeyondItsBufferCannotBeRead) {
    tree_.nodes[20].identifier = "PCI\\" + std::string(195, 'x');
    EXPECT_EQ(derive(30), "0000:01:E0:00"); // 199 characters and a zero
    tree_.nodes[20].identifier += 'x';
    expectFailure(30, 185);
}

TEST_F(Derivation, ParentIsLookedUpByItsIdentifier) {
    tree_.nodes[40] = {"BUS", "ACPI\\PNP0A08\\1"}; // the same identifier, found in place of 12
    EXPECT_EQ(derive(30), "0000:00:E0:00");
}

TEST_F(Derivation, IdentifierThatLeadsBackDownIsRefused) {
    tree_.nodes[12].identifier = "PCI\\30";
    tree_.nodes[30].identifier = "none";
    tree_.nodes[99] = {"PCI", "PCI\\30", 0, 20}; // the root's identifier opens a device below it
    expectEndless(20);
}

TEST_F(Derivation, TreeThatLoopsUpwardsIsRefused) {
    tree_.nodes[20].parent = 30;
    expectEndless(30);
    EXPECT_LT(tree_.calls, 2000);
    tree_.nodes[20].parent = 20;
    expectEndless(20);
}

TEST_F(Derivation, AsManyLevelsAsThereCanBeBusesAreDerived) {
    platform::DeviceNode node = 12;
    std::string expected = "0000:01";
    for (unsigned level = 0; level < 256; ++level) {
        const platform::DeviceNode below = 1000U + level;
        tree_.nodes[below] = {"PCI", "PCI\\" + std::to_string(below), 0x00010000, node};
        node = below;
        expected += ":08";
    }
    EXPECT_EQ(derive(node), expected);
    tree_.nodes[5000] = {"PCI", "PCI\\5000", 0, node};
    expectEndless(5000);
}

TEST_F(Derivation, SiblingsThatLoopAreRefused) {
    tree_.nodes[11].nextSibling = 10;
    expectEndless(20);
}

// A system that reports success and leaves the output as it was leads nowhere, and not astray.
class Silent : public fakes::Tree {
public:
    bool firstChild(platform::DeviceNode, platform::DeviceNode&) override { return true; }
};

TEST(SilentTree, SuccessWithoutAnAnswerCountsNothing) {
    Silent tree;
    tree.nodes[12] = {"ACPI", "ACPI\\PNP0A08\\1", 0, 1};
    tree.nodes[20] = {"PCI", "PCI\\20", 0x001C0000, 12};
    tErrorStatus status;
    std::string text;
    deriveSlotPath(tree, 20, text, status);
    EXPECT_EQ(text, "0000:00:E0");
}

TEST_F(Derivation, DoesNothingAfterAnEarlierFailure) {
    tErrorStatus status;
    status.code = -7;
    std::string text = "kept";
    deriveSlotPath(tree_, 30, text, status);
    EXPECT_EQ(status.code, -7);
    EXPECT_EQ(text, "kept");
    EXPECT_EQ(tree_.calls, 0);
}

class Exhausted : public fakes::Tree {
public:
    bool address(platform::DeviceNode, std::uint32_t&) override { throw std::bad_alloc(); }
};

TEST(ExhaustedTree, OutOfMemoryIsAStatus) {
    Exhausted tree;
    tree.nodes[20] = {"PCI", "PCI\\20"};
    tErrorStatus status;
    std::string text = "kept";
    deriveSlotPath(tree, 20, text, status);
    EXPECT_EQ(status.code, -52000);
    EXPECT_THAT(status.textOrEmpty(), StartsWith(R"({"error_constant":"zoquilerr_memoryFull",)"));
    EXPECT_EQ(text, "kept");
}

// A tree that allocates nothing: as many levels of PCI devices as a node says.
class Ladder : public platform::DeviceTree {
public:
    bool enumeratorName(platform::DeviceNode node, char* buffer, std::size_t) override {
        std::memcpy(buffer, node != 0 ? "PCI" : "BUS", 4);
        return true;
    }
    bool address(platform::DeviceNode node, std::uint32_t& value) override {
        value = static_cast<std::uint32_t>(node) << 16;
        return true;
    }
    bool parent(platform::DeviceNode node, platform::DeviceNode& result) override {
        result = node - 1;
        return true;
    }
    bool firstChild(platform::DeviceNode, platform::DeviceNode&) override { return false; }
    bool nextSibling(platform::DeviceNode, platform::DeviceNode&) override { return false; }
    bool identifier(platform::DeviceNode node, char* buffer, std::size_t capacity) override {
        std::snprintf(buffer, capacity, "%d", static_cast<int>(node));
        return true;
    }
    bool open(const char* identifier, platform::DeviceNode& result) override {
        result = static_cast<platform::DeviceNode>(std::atoi(identifier));
        return true;
    }
};

TEST(LadderTree, TextThatCannotGrowIsOutOfMemory) {
    Ladder tree;
    std::size_t nth = 1;
    for (;; ++nth) {
        tErrorStatus status;
        std::string text = "kept";
        bool failed = true;
        {
            const testsupport::AllocationFault fault(nth);
            deriveSlotPath(tree, 18, text, status);
            failed = fault.happened();
        }
        if (!failed) {
            EXPECT_EQ(text, "0000:00:08:10:18:20:28:30:38:40:48:50:58:60:68:70:78:80:88:90");
            break;
        }
        EXPECT_EQ(status.code, -52000);
        EXPECT_EQ(status.textOrEmpty(), record("zoquilerr_memoryFull", 1641));
        EXPECT_EQ(text, "kept");
    }
    EXPECT_GT(nth, 2U) << "the text has outgrown more than one buffer";
}

TEST_F(Derivation, TextIsDerivedOnceAndThenKept) {
    DerivedSlotPath path(tree_, 30);
    tErrorStatus status;
    EXPECT_EQ(path.text(status), "0000:01:E0:00");
    const int calls = tree_.calls;
    EXPECT_EQ(calls, 17);
    tPropertyBuffer buffer = {'k', 'e', 'p', 't'};
    path.handOut(buffer, status);
    EXPECT_EQ(status.code, -52019);
    tErrorStatus fresh;
    EXPECT_EQ(path.text(fresh), "0000:01:E0:00");
    EXPECT_EQ(fresh.code, 0);
    EXPECT_EQ(tree_.calls, calls);
}

TEST_F(Derivation, FailedDerivationIsTriedAgain) {
    DerivedSlotPath path(tree_, 30);
    tErrorStatus status;
    tree_.failingCall = 2;
    EXPECT_EQ(path.text(status), "");
    EXPECT_EQ(status.code, -52006);
    tErrorStatus fresh;
    EXPECT_EQ(path.text(fresh), "0000:01:E0:00");
    EXPECT_EQ(fresh.code, 0);
}

TEST_F(Derivation, HandOutKeepsTheBoundOfFourBytes) {
    tPropertyBuffer buffer = {'k', 'e', 'p', 't'};
    {
        DerivedSlotPath path(tree_, 20);
        tErrorStatus status;
        path.handOut(buffer, status);
        EXPECT_EQ(status.code, -52019);
        EXPECT_EQ(status.textOrEmpty(), record("kQuilErrBufferTooSmall", 233));
        EXPECT_EQ(buffer, (tPropertyBuffer{'k', 'e', 'p', 't'}));
    }
    tree_.nodes[20].parent = std::nullopt;
    DerivedSlotPath path(tree_, 20);
    tErrorStatus status;
    path.handOut(buffer, status);
    EXPECT_EQ(status.code, 0);
    EXPECT_EQ(buffer, (tPropertyBuffer{':', 'E', '0', '\0'}));
}

TEST_F(Derivation, HandOutReportsTheFailedDerivation) {
    DerivedSlotPath path(tree_, 12);
    tPropertyBuffer buffer = {'k', 'e', 'p', 't'};
    tErrorStatus status;
    path.handOut(buffer, status);
    EXPECT_EQ(status.code, -52006);
    EXPECT_EQ(status.textOrEmpty(), record("kQuilErrDeviceQuery", 134));
    EXPECT_EQ(buffer, (tPropertyBuffer{'k', 'e', 'p', 't'}));
    const int calls = tree_.calls;
    path.handOut(buffer, status);
    EXPECT_EQ(tree_.calls, calls) << "nothing is done after an earlier failure";
}

} // namespace
