// A box is described from its upstream port; whoever names the port that it is plugged into is told
// which bridge that is.
#include "tests/support/busBuilder.h"
#include "tests/support/fileFolder.h"
#include "tests/tavctl/runTavctl.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using tavctltest::runTavctl;
using tavctltest::says;
using testsupport::BusBuilder;
using testsupport::FileFolder;

constexpr testsupport::Ids kRoot{0x8086, 0x1901};
constexpr testsupport::Ids kSwitch{0x10B5, 0x8608};
constexpr testsupport::Ids kConventional{0x104C, 0x8231};

testsupport::CommandResult describeOn(const BusBuilder& bus, const std::string& address,
                                      const testsupport::DumpOptions& options = {}) {
    const FileFolder folder;
    return runTavctl("describe " + address + " --dump " +
                     folder.write("bus.dump", bus.dump(options)));
}

// Root port 00:01.0, upstream port 01:00.0, downstream ports 02:01.0 and 02:02.0; behind the first
// another switch, 03:00.0.
BusBuilder nestedSwitches() {
    BusBuilder bus;
    const auto up = bus.bridge(bus.rootPort(0, 1, 0, kRoot), 0, 0, kSwitch);
    const auto nested = bus.bridge(bus.bridge(up, 1, 0, kSwitch), 0, 0, kConventional);
    bus.bridge(nested, 1, 0, kSwitch);
    bus.bridge(up, 2, 0, kSwitch);
    return bus;
}

const std::string kRootPortRefused =
    "tavctl: describe (00:01.0): it is the root port that the box is plugged into; the box's "
    "upstream port is 01:00.0\n  see: tavctl describe 01:00.0\n";

TEST(DescribeBoxBridge, RootPortOfABoxIsRefusedWithTheUpstreamPort) {
    const auto result = describeOn(nestedSwitches(), "00:01.0");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, kRootPortRefused);
}

TEST(DescribeBoxBridge, DownstreamPortOfABoxIsRefusedWithTheUpstreamPort) {
    EXPECT_TRUE(says(describeOn(nestedSwitches(), "02:01.0"), 1,
                     "(02:01.0): it is the downstream port that the box is plugged into; the "
                     "box's upstream port is 03:00.0\n"));
}

TEST(DescribeBoxBridge, UpstreamPortIsDescribedWithoutAWord) {
    const auto result = describeOn(nestedSwitches(), "01:00.0");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output.find("tavctl: "), std::string::npos) << result.output;
    EXPECT_TRUE(result.output.starts_with("; New box 10B5:8608")) << result.output;
}

TEST(DescribeBoxBridge, EmptyDownstreamPortIsDescribedAndSpokenOf) {
    EXPECT_TRUE(says(describeOn(nestedSwitches(), "02:02.0"), 0,
                     "tavctl: 02:02.0 is a downstream port, which seldom is a box's own; no "
                     "bridge stands below it\n"));
}

// What an ordinary user reads of a live bus: no capabilities, but files that tell of links.
TEST(DescribeBoxBridge, LinksTellThePortsWhereCapabilitiesCannotBeRead) {
    const FileFolder folder;
    nestedSwitches().writeSysfs(folder.file("sys"));
    const auto on = [&](const std::string& address) {
        return runTavctl("describe " + address + " --dump " + folder.file("sys"));
    };
    EXPECT_EQ(on("00:01.0").output, kRootPortRefused);
    EXPECT_TRUE(says(on("02:01.0"), 1, "the box's upstream port is 03:00.0\n"));
    EXPECT_EQ(on("01:00.0").output.find("tavctl: "), std::string::npos);
}

// A card of a conventional bridge behind a link of its own has no ports below it.
TEST(DescribeBoxBridge, LinkOfACardWithConventionalBusesIsNoUpstreamPort) {
    BusBuilder bus;
    const auto card = bus.bridge(bus.rootPort(0, 1, 0, kRoot), 0, 0, kConventional);
    bus.bridge(card, 1, 0, kConventional, 0);
    const FileFolder folder;
    bus.writeSysfs(folder.file("sys"));
    EXPECT_TRUE(says(runTavctl("describe 00:01.0 --dump " + folder.file("sys")), 0,
                     "tavctl: 00:01.0 is a root port, which seldom is a box's own; right below it "
                     "stands 01:00.0\n"));
}

TEST(DescribeBoxBridge, HeadersAloneLeaveItOpen) {
    const testsupport::DumpOptions headers{.bytes = testsupport::kHeaderBytes};
    EXPECT_TRUE(says(describeOn(nestedSwitches(), "00:01.0", headers), 0,
                     "tavctl: 00:01.0 may be a root port (its capabilities are not known), which "
                     "seldom is a box's own; right below it stands 01:00.0\n"));
    EXPECT_EQ(describeOn(nestedSwitches(), "02:01.0", headers).output.find("seldom"),
              std::string::npos);
    BusBuilder wide;
    const auto root = wide.rootPort(0, 1, 0, kRoot);
    wide.bridge(root, 1, 0, kSwitch);
    wide.bridge(root, 2, 0, kSwitch);
    EXPECT_EQ(describeOn(wide, "00:01.0", headers).output.find("seldom"), std::string::npos);
}

TEST(DescribeBoxBridge, ConventionalBridgeOnARootBusMayBeABox) {
    BusBuilder bus;
    bus.bridge(bus.rootPort(0, 1, 0, kConventional, 0), 4, 0, kConventional, 0);
    const auto result = describeOn(bus, "00:01.0");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output.find("seldom"), std::string::npos) << result.output;
}

TEST(DescribeBoxBridge, SeveralUpstreamPortsBelowLeaveTheChoice) {
    BusBuilder bus;
    const auto root = bus.rootPort(0, 1, 0, kRoot);
    bus.bridge(root, 0, 0, kSwitch);
    bus.bridge(root, 0, 1, kSwitch);
    EXPECT_TRUE(says(describeOn(bus, "00:01.0"), 0,
                     "which seldom is a box's own; right below it stand 01:00.0 and 01:00.1\n"));
}

// Emulated switches are made of bridges that call themselves root ports.
TEST(DescribeBoxBridge, RootPortThatStandsOnNoRootBusIsNone) {
    BusBuilder bus = nestedSwitches();
    const auto up = bus.nodes().at(1);
    ASSERT_EQ(bus.address(up), "01:00.0");
    bus.poke(up, 0x62, {0x42});
    EXPECT_EQ(describeOn(bus, "01:00.0").output.find("seldom"), std::string::npos);
    EXPECT_EQ(describeOn(bus, "00:01.0").output, kRootPortRefused);
}

TEST(DescribeBoxBridge, CapabilitiesThatComeBackToThemselvesEnd) {
    BusBuilder bus = nestedSwitches();
    bus.poke(bus.nodes().at(0), 0x41, {0x40});
    const auto result = describeOn(bus, "00:01.0");
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_EQ(result.output.find("seldom"), std::string::npos) << result.output;
}

} // namespace
