// What describe writes passes lint and makes the plug-in list the box, on every bridge where that
// is possible; and --watch finds the connectors by what happens on the bus.
#include "pcibus/bus.h"
#include "pcibus/readBus.h"
#include "tests/support/command.h"
#include "tests/support/effort.h"
#include "tests/support/fileFolder.h"
#include "tests/tavctl/explain/randomMachine.h"
#include "tests/tavctl/runTavctl.h"
#include "tests/tavctl/sample.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using tavctltest::kSample;
using tavctltest::runTavctlForOutput;
using testsupport::BusBuilder;
using testsupport::FileFolder;

// A folder to put a description into and to use it at once.
class Bench {
public:
    Bench() { fs::create_directory(folder_.file("PCI Hardware Descriptions")); }

    [[nodiscard]] std::string file() const {
        return folder_.file("PCI Hardware Descriptions/box.ini");
    }
    [[nodiscard]] const FileFolder& folder() const { return folder_; }

    testsupport::CommandResult describe(const std::string& dump, const std::string& arguments) {
        fs::remove(file());
        return runTavctlForOutput("describe --dump '" + dump + "' -o '" + file() + "' " +
                                  arguments);
    }

    void expectSoundAndListed(const std::string& dump, const std::string& address) {
        const auto lint = runTavctlForOutput("lint --descriptions '" + folder_.file("") + "'");
        EXPECT_EQ(lint.output, "1 file, no problems\n") << address;
        const auto list =
            runTavctlForOutput("list --json --dump '" + dump + "' --descriptions '" +
                               folder_.file("") + "' --state '" + folder_.file("") + "'");
        ASSERT_EQ(list.exitStatus, 0) << list.output;
        const json whole = json::parse(list.output);
        bool found = false;
        for (const json& device : whole.at("devices"))
            found = found || device.at("address") == "0000:" + address;
        EXPECT_TRUE(found) << address << list.output
                           << folder_.read("PCI Hardware Descriptions/"
                                           "box.ini");
    }

private:
    FileFolder folder_;
};

struct DescribeTally {
    std::size_t described = 0;
    std::size_t refused = 0;
    std::size_t sentOn = 0; // to the upstream port below
    std::size_t uneven = 0; // by their lanes
};

void describeEveryBridge(Bench& bench, const std::string& dump, DescribeTally& tally) {
    const pcibus::Bus bus = pcibus::readBus(dump);
    for (const std::uint32_t handle : bus.bridges()) {
        const std::string address = pcibus::addressText(*bus.find(handle));
        for (const char* option : {"", " --whole", " --lanes 4"}) {
            const auto result = bench.describe(dump, address + option);
            if (result.exitStatus == 0) {
                bench.expectSoundAndListed(dump, address);
                ++tally.described;
                continue;
            }
            EXPECT_EQ(result.exitStatus, 1) << result.output;
            EXPECT_FALSE(fs::exists(bench.file()));
            if (result.output.find("the box's upstream port is ") != std::string::npos) {
                ++tally.sentOn;
                continue;
            }
            if (result.output.find("describe (--lanes 4): ") != std::string::npos) {
                ++tally.uneven;
                continue;
            }
            EXPECT_NE(result.output.find("no description by this bridge makes the plug-in list"),
                      std::string::npos)
                << result.output;
            ++tally.refused;
        }
    }
}

TEST(Describe, EveryBridgeOfTheSampleMachine) {
    Bench bench;
    DescribeTally tally;
    describeEveryBridge(bench, kSample, tally);
    EXPECT_GT(tally.described, 28U);
    EXPECT_LT(tally.refused, 8U);
    EXPECT_EQ(tally.sentOn, 9U);
    EXPECT_GT(tally.uneven, 0U);
}

TEST(Describe, BridgesOfGeneratedMachines) {
    std::mt19937 random(77); // NOLINT(bugprone-random-generator-seed): the same each time
    DescribeTally tally;
    const int machines = testsupport::isSanitized() ? 2 : 6;
    for (int i = 0; i < machines; ++i) {
        Bench bench;
        const auto made = testtavctl::randomMachine(random);
        describeEveryBridge(bench, bench.folder().write("bus.dump", made.bus.dump()), tally);
    }
    EXPECT_GT(tally.described, tally.refused);
    EXPECT_GT(tally.sentOn, 0U);
}

TEST(Describe, IsCommentedAndNamesWhatToEdit) {
    const auto result =
        runTavctlForOutput("describe 01:00.0 --model 'My Box' --category PCI --dump " + kSample);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_NE(result.output.find("; My Box. A draft that tavctl describe made from the bridge "
                                 "01:00.0."),
              std::string::npos);
    EXPECT_NE(result.output.find("\n; EDIT: the name"), std::string::npos);
    EXPECT_NE(result.output.find("\nModel = My Box\n"), std::string::npos);
    EXPECT_NE(result.output.find("\nDeviceCategory = PCI\n"), std::string::npos);
    EXPECT_NE(result.output.find("also lists 09:00.0"), std::string::npos);
}

TEST(Describe, JsonHoldsTheText) {
    const auto result = testsupport::runCommand(
        TAVCTL_FILE " describe 01:00.0 --json 2>/dev/null --dump " + kSample);
    const json whole = json::parse(result.output);
    EXPECT_EQ(whole.at("version"), 1);
    EXPECT_EQ(whole.at("bridge"), "0000:01:00.0");
    EXPECT_EQ(whole.at("alsoListed"), json::array({"0000:09:00.0"}));
    EXPECT_TRUE(whole.at("unfinished").is_null());
    EXPECT_NE(whole.at("text").get<std::string>().find("[DownstreamPort3]"), std::string::npos);
}

TEST(Describe, SaysWhyNot) {
    const auto fails = [](const std::string& arguments, const std::string& why) {
        const auto result = runTavctlForOutput("describe " + arguments + " --dump " + kSample);
        EXPECT_EQ(result.exitStatus, 1) << arguments;
        EXPECT_NE(result.output.find(why), std::string::npos) << result.output;
    };
    fails("03:00.0", "it is no bridge; the one above it is 02:00.0");
    fails("00:00.0", "it is no bridge, and stands on a root bus");
    fails("01:00.7", "there is no function at this address");
    fails("first " + tavctltest::kDescriptions, "no device has this name, address or model");
    fails("02:01.0", "02:00.0 has the same identifiers and comes first");
    fails("01:00.0 --model '\"Box\"'", "must have no quotes");
    EXPECT_EQ(runTavctlForOutput("describe 01:00.0 --category Box").exitStatus, 2);
    EXPECT_EQ(runTavctlForOutput("describe --dump " + kSample).exitStatus, 2);
}

// A chain of bridges of one kind, each the first port of the one above it: by the count, the second
// one is a part of the first.
TEST(Describe, BridgesThatOneAboveWouldTakeForItsOwnAreLeftOutOfTheCount) {
    BusBuilder bus;
    auto bridge = bus.rootPort(0, 1, 0, {0x8086, 0x1901});
    for (int i = 0; i < 3; ++i)
        bridge = bus.bridge(bridge, 0, 0, {0x104C, 0x8232}, 0);
    Bench bench;
    const std::string dump = bench.folder().write("bus.dump", bus.dump());
    ASSERT_EQ(bench.describe(dump, "02:00.0").exitStatus, 0);
    bench.expectSoundAndListed(dump, "02:00.0");
    const std::string text = bench.folder().read("PCI Hardware Descriptions/box.ini");
    EXPECT_NE(text.find("; Bridges of this box have the same identifiers as one above it"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("IsOptional = 1\n", text.find("[DownstreamPort1]")), std::string::npos)
        << text;
}

TEST(Describe, PortWithoutABusOfItsOwnIsToldByItsAddressAlone) {
    BusBuilder bus;
    const auto up = bus.bridge(bus.rootPort(0, 1, 0, {0x8086, 0x1901}), 0, 0, {0x104C, 0x8232}, 0);
    bus.setSecondaryBus(bus.bridge(up, 1, 0, {0x104C, 0x8233}, 0), 0);
    const FileFolder folder;
    const auto result =
        runTavctlForOutput("describe 01:00.0 --dump " + folder.write("bus.dump", bus.dump()));
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_NE(result.output.find("; Now 02:01.0.\n"), std::string::npos) << result.output;
}

// A box with ports of these widths, the upstream one's first.
testsupport::CommandResult describeByLanes(int lanes, const std::vector<unsigned>& widths) {
    BusBuilder bus;
    const auto up =
        bus.bridge(bus.rootPort(0, 1, 0, {0x8086, 0x1901}), 0, 0, {0x10B5, 0x8608}, widths.front());
    for (unsigned i = 1; i < widths.size(); ++i)
        bus.bridge(up, i, 0, {0x10B5, 0x8608}, widths[i]);
    const FileFolder folder;
    return runTavctlForOutput("describe 01:00.0 --dump " + folder.write("bus.dump", bus.dump()) +
                              " --lanes " + std::to_string(lanes) + " -o " +
                              folder.file("box.ini") + " && cat " + folder.file("box.ini"));
}

TEST(Describe, LanesThatAPortDoesNotComeOutEvenByAreRefused) {
    const auto refuses = [](int lanes, const std::vector<unsigned>& widths,
                            const std::string& why) {
        const auto result = describeByLanes(lanes, widths);
        EXPECT_EQ(result.exitStatus, 1) << why;
        EXPECT_EQ(result.output,
                  "tavctl: describe (--lanes " + std::to_string(lanes) + "): " + why + "\n");
    };
    refuses(4, {0, 4},
            "no link width is known of the upstream port 01:00.0, so it would take no "
            "label");
    refuses(4, {4, 4, 0},
            "no link width is known of the downstream port 02:02.0, so it would take "
            "no label");
    refuses(8, {4, 8},
            "the upstream port 01:00.0 has 4 lanes, fewer than 8, so it would take no "
            "label");
    refuses(4, {8, 8, 1},
            "the downstream port 02:02.0 has 1 lane, fewer than 4, so it would take "
            "no label");
    refuses(3, {8, 3}, "the upstream port 01:00.0 has 8 lanes, which is no multiple of 3");
    refuses(4, {8, 6}, "the downstream port 02:01.0 has 6 lanes, which is no multiple of 4");
}

TEST(Describe, LanesGiveEachPortALabelForSoMany) {
    const auto result = describeByLanes(4, {8, 4, 12});
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_NE(result.output.find("\nConnectorLabels = HOST1,HOST2,1,2.1,2.2,2.3\n"),
              std::string::npos)
        << result.output;
}

// A box with three ports behind a root port; behind each a card or nothing.
std::string box(bool first, bool second, bool third, unsigned width = 4,
                testsupport::Ids upIds = {0x10B5, 0x8608}) {
    BusBuilder bus;
    const auto other = bus.rootPort(0, 1, 0, {0x8086, 0x1901}, 4);
    bus.endpoint(other, 0, 0, {0x8086, 0x10D3});
    const auto root = bus.rootPort(0, 2, 0, {0x8086, 0x1901}, 4);
    const auto up = bus.bridge(root, 0, 0, upIds, width);
    const bool plugged[] = {first, second, third};
    for (unsigned i = 0; i < 3; ++i) {
        const auto port = bus.bridge(up, i + 1, 0, {0x10B5, 0x8608}, width);
        if (plugged[i]) {
            const auto bridge = bus.bridge(port, 0, 0, {0x104C, 0x8231}, 0);
            bus.endpoint(bridge, 4, 0, {0x1172, 0xE001});
        }
    }
    return bus.dump();
}

// Runs describe --watch on a dump that is replaced whenever a question asks for it. Each answer
// stands for one question; "DUMP n" replaces the dump by number n and then presses Enter.
testsupport::CommandResult watch(const FileFolder& folder, const std::vector<std::string>& answers,
                                 const std::string& options = {}) {
    std::string script = "coproc T { '" TAVCTL_FILE "' describe 02:00.0 --watch " + options +
                         " --dump '" + folder.file("bus.dump") + "' -o '" + folder.file("box.ini") +
                         "' 2>&1; }\n"
                         "pid=$T_PID; exec 3<&\"${T[0]}\" 4>&\"${T[1]}\" {T[1]}>&-\n"
                         "ask() { while read -r line <&3; do echo \"$line\"; case \"$line\" in "
                         "*'ends the list.)'*|*'skips it.'*) return;; esac; done; }\n";
    for (const std::string& answer : answers) {
        script += "ask\n";
        if (answer.starts_with("DUMP "))
            script += "cp '" + folder.file("dump" + answer.substr(5)) + "' '" +
                      folder.file("bus.dump") + "'; echo >&4\n";
        else
            script += "echo '" + answer + "' >&4\n";
    }
    script += "exec 4>&-; cat <&3; wait \"$pid\"\n";
    return testsupport::runCommand("timeout 60 bash '" + folder.write("script.sh", script) + "'");
}

TEST(DescribeWatch, FindsTheConnectorsByWhatIsPluggedIn) {
    const FileFolder folder;
    folder.write("bus.dump", box(false, false, false));
    folder.write("dump1", box(false, false, true));
    folder.write("dump2", box(true, false, true));
    const auto result = watch(folder, {"LEFT", "DUMP 1", "MIDDLE", "s", "RIGHT", "DUMP 2", ""});
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    const std::string text = folder.read("box.ini");
    EXPECT_NE(text.find("ConnectorLabels = HOST,LEFT,RIGHT\n"), std::string::npos) << text;
    EXPECT_NE(text.find("[DownstreamPort1]\nIDsSameAs = Anchor\nTraversalMapFromAnchor = d3f0\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("[DownstreamPort2]\nIDsSameAs = Anchor\nTraversalMapFromAnchor = d1f0\n"),
              std::string::npos)
        << text;
    EXPECT_EQ(text.find("[DownstreamPort3]"), std::string::npos) << text;
    EXPECT_EQ(runTavctlForOutput("lint '" + folder.file("box.ini") + "'").output,
              "1 file, no problems\n");
}

TEST(DescribeWatch, UnpluggingTellsAsWell) {
    const FileFolder folder;
    folder.write("bus.dump", box(true, true, true));
    folder.write("dump1", box(true, false, true));
    const auto result = watch(folder, {"B", "DUMP 1", ""});
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_NE(result.output.find("Connector \"B\" is the port"), std::string::npos);
    EXPECT_NE(folder.read("box.ini").find("TraversalMapFromAnchor = d2f0\n"), std::string::npos);
}

TEST(DescribeWatch, AsksAgainWhenNothingOrTooMuchChanged) {
    const FileFolder folder;
    folder.write("bus.dump", box(false, false, false));
    folder.write("dump0", box(false, false, false));
    folder.write("dump1", box(true, true, false));
    folder.write("dump2", box(true, true, true));
    const auto result = watch(folder, {"A,B", "A", "DUMP 0", "DUMP 1", "DUMP 2", ""});
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_NE(result.output.find("A label must have no comma."), std::string::npos);
    EXPECT_NE(result.output.find("Nothing has changed below the box."), std::string::npos);
    EXPECT_NE(result.output.find("behind 2 ports at once"), std::string::npos) << result.output;
    EXPECT_NE(folder.read("box.ini").find("TraversalMapFromAnchor = d3f0\n"), std::string::npos);
}

TEST(DescribeWatch, SeveralConnectorsOfOnePortGiveTheLinkWidthPerLabel) {
    const FileFolder folder;
    folder.write("bus.dump", box(false, false, false, 8));
    folder.write("dump1", box(true, false, false, 8));
    folder.write("dump2", box(false, false, false, 8));
    folder.write("dump3", box(false, true, false, 8));
    folder.write("dump4", box(false, false, false, 8));
    const auto result =
        watch(folder, {"A1", "DUMP 1", "A2", "DUMP 2", "B1", "DUMP 3", "B2", "DUMP 4", ""});
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    const std::string text = folder.read("box.ini");
    EXPECT_NE(text.find("LinkWidthPerLabel = 4\n"), std::string::npos) << text;
    EXPECT_NE(text.find("ConnectorLabels = HOST1,HOST2,A1,A2,B1,B2\n"), std::string::npos) << text;
}

TEST(DescribeWatch, LabelsThatNoWidthExplainsAreRefused) {
    const FileFolder folder;
    folder.write("bus.dump", box(false, false, false, 8));
    folder.write("dump1", box(true, false, false, 8));
    folder.write("dump2", box(false, false, false, 8));
    folder.write("dump3", box(false, true, false, 8));
    const auto result = watch(folder, {"A1", "DUMP 1", "A2", "DUMP 2", "B", "DUMP 3", ""});
    EXPECT_EQ(result.exitStatus, 1) << result.output;
    EXPECT_NE(result.output.find("all ports must have the same number of lanes for each label"),
              std::string::npos)
        << result.output;
}

// Two labels on the first port, one on the second.
std::vector<std::string> contradiction(const FileFolder& folder) {
    folder.write("bus.dump", box(false, false, false, 8));
    folder.write("dump1", box(true, false, false, 8));
    folder.write("dump2", box(false, false, false, 8));
    folder.write("dump3", box(false, true, false, 8));
    return {"A1", "DUMP 1", "A2", "DUMP 2", "B", "DUMP 3", ""};
}

TEST(DescribeWatch, LabelsThatContradictEachOtherAreAskedForAgain) {
    const FileFolder folder;
    auto answers = contradiction(folder);
    answers.insert(answers.end(), {"-A2", ""});
    const auto result = watch(folder, answers);
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_NE(result.output.find("Found so far:\n"
                                 "d1f0 (8 lanes): A1 and A2\n"
                                 "d2f0 (8 lanes): B\n"),
              std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("Connector \"A2\" is off the list."), std::string::npos);
    const std::string text = folder.read("box.ini");
    EXPECT_NE(text.find("\nConnectorLabels = HOST,A1,B\n"), std::string::npos) << text;
    EXPECT_NE(text.find("It is complete and\n; works as it is"), std::string::npos) << text;
    EXPECT_EQ(text.find("EDIT: printed"), std::string::npos) << text;
    EXPECT_EQ(runTavctlForOutput("lint '" + folder.file("box.ini") + "'").output,
              "1 file, no problems\n");
}

TEST(DescribeWatch, ConnectorThatWasMissingSettlesAContradiction) {
    const FileFolder folder;
    auto answers = contradiction(folder);
    folder.write("dump4", box(false, false, false, 8));
    answers.insert(answers.end(), {"B2", "DUMP 4", ""});
    const auto result = watch(folder, answers);
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_NE(folder.read("box.ini").find("\nConnectorLabels = HOST1,HOST2,A1,A2,B,B2\n"),
              std::string::npos);
}

TEST(DescribeWatch, PortWithoutItsLastLabelIsOffTheListToo) {
    const FileFolder folder;
    auto answers = contradiction(folder);
    folder.write("dump4", box(false, true, true, 8));
    answers.insert(answers.end(), {"-A1", "-A2", "-C", "DUMP 4", ""});
    const auto result = watch(folder, answers);
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    const std::string text = folder.read("box.ini");
    // No label of the list is called C: then it is a connector's own.
    EXPECT_NE(text.find("\nConnectorLabels = HOST,B,-C\n"), std::string::npos) << text;
    EXPECT_NE(text.find("[DownstreamPort1]\nIDsSameAs = Anchor\nTraversalMapFromAnchor = d2f0\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("[DownstreamPort2]\nIDsSameAs = Anchor\nTraversalMapFromAnchor = d3f0\n"),
              std::string::npos)
        << text;
}

void expectUnfinishedDraft(const FileFolder& folder, const testsupport::CommandResult& result) {
    EXPECT_EQ(result.exitStatus, 1) << result.output;
    EXPECT_NE(result.output.find("tavctl: describe (02:00.0): port \"B\" is 8 lanes wide and has "
                                 "1 label; all ports "),
              std::string::npos)
        << result.output;
    const std::string text = folder.read("box.ini");
    EXPECT_NE(text.find(" It is not\n; finished, and the box"), std::string::npos) << text;
    EXPECT_NE(text.find("; EDIT: this has to be settled: port \"B\" is 8 lanes wide"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("; EDIT: printed beside its connectors: A1 and A2.\n[DownstreamPort1]\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("; EDIT: printed beside its connectors: B.\n[DownstreamPort2]\n"),
              std::string::npos)
        << text;
}

TEST(DescribeWatch, ContradictionThatNobodyMendsLeavesADraft) {
    const FileFolder folder;
    auto answers = contradiction(folder);
    answers.emplace_back("");
    expectUnfinishedDraft(folder, watch(folder, answers));
}

TEST(DescribeWatch, AnswersThatEndInAContradictionLeaveADraft) {
    const FileFolder folder;
    auto answers = contradiction(folder);
    answers.pop_back();
    expectUnfinishedDraft(folder, watch(folder, answers));
}

TEST(DescribeWatch, UnfinishedDraftIsToldInJson) {
    const FileFolder folder;
    const auto result = watch(folder, contradiction(folder), "--json");
    EXPECT_EQ(result.exitStatus, 1) << result.output;
    const json whole = json::parse(folder.read("box.ini"));
    EXPECT_TRUE(whole.at("unfinished").get<std::string>().starts_with("port \"B\" is 8 lanes"))
        << whole;
    EXPECT_NE(whole.at("text").get<std::string>().find("\n[DownstreamPort2]\n"), std::string::npos);
}

TEST(DescribeWatch, BoxThatComesBackIsGoneOnWith) {
    const FileFolder folder;
    folder.write("bus.dump", box(false, false, false));
    folder.write("dump1", box(true, false, false));
    folder.write("dump2", "");
    folder.write("dump3", box(true, true, false));
    const auto result = watch(folder, {"A", "DUMP 1", "B", "DUMP 2", "DUMP 3", ""});
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_NE(result.output.find("The box is no longer at MR00:00,10. What was found is kept"),
              std::string::npos)
        << result.output;
    EXPECT_NE(folder.read("box.ini").find("\nConnectorLabels = HOST,A,B\n"), std::string::npos);
}

TEST(DescribeWatch, BoxThatStaysAwayLeavesADraftOfWhatWasFound) {
    const FileFolder folder;
    folder.write("bus.dump", box(false, false, false));
    folder.write("dump1", box(true, false, false));
    folder.write("dump2", "");
    const auto result = watch(folder, {"A", "DUMP 1", "B", "DUMP 2"});
    EXPECT_EQ(result.exitStatus, 1) << result.output;
    EXPECT_NE(result.output.find("tavctl: describe (02:00.0): the box is no longer at MR00:00,10"),
              std::string::npos)
        << result.output;
    const std::string text = folder.read("box.ini");
    EXPECT_NE(text.find("settled: the box is no longer at MR00:00,10."), std::string::npos) << text;
    EXPECT_NE(text.find("\nConnectorLabels = HOST,A\n"), std::string::npos) << text;
}

// Below another root bus, in a box at the same place.
TEST(DescribeWatch, WhatHappensInABoxOfAnotherRootBusIsNoConnector) {
    const auto machine = [](bool here, bool there) {
        BusBuilder bus;
        bus.endpoint(bus.rootPort(0, 1, 0, {0x8086, 0x1901}), 0, 0, {0x8086, 0x10D3});
        for (const auto& [root, isPlugged] : {std::pair(0U, here), std::pair(0x80U, there)}) {
            const auto up =
                bus.bridge(bus.rootPort(root, 2, 0, {0x8086, 0x1901}), 0, 0, {0x10B5, 0x8608});
            const auto port = bus.bridge(up, root == 0 ? 1 : 2, 0, {0x10B5, 0x8608});
            if (isPlugged)
                bus.endpoint(port, 0, 0, {0x1172, 0xE001});
        }
        return bus.dump();
    };
    const FileFolder folder;
    folder.write("bus.dump", machine(false, false));
    folder.write("dump1", machine(false, true));
    folder.write("dump2", machine(true, false));
    const auto result = watch(folder, {"A", "DUMP 1", "DUMP 2", ""});
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_NE(result.output.find("Nothing has changed below the box."), std::string::npos)
        << result.output;
    EXPECT_NE(folder.read("box.ini").find("TraversalMapFromAnchor = d1f0\n"), std::string::npos);
}

TEST(DescribeWatch, BusThatCannotBeReadMeanwhileIsReadAgain) {
    const FileFolder folder;
    folder.write("bus.dump", box(false, false, false));
    folder.write("dump1", box(true, false, false));
    folder.write("dump2", "no dump");
    folder.write("dump3", box(true, true, false));
    const auto result = watch(folder, {"A", "DUMP 1", "B", "DUMP 2", "DUMP 3", ""});
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_NE(result.output.find("What was found is kept; try again."), std::string::npos)
        << result.output;
    EXPECT_NE(folder.read("box.ini").find("\nConnectorLabels = HOST,A,B\n"), std::string::npos);
}

// Nothing but the connectors that are tried is looked at by its lanes.
TEST(DescribeWatch, LanesOfPortsThatAreNoConnectorsDoNotMatter) {
    BusBuilder bus;
    bus.endpoint(bus.rootPort(0, 1, 0, {0x8086, 0x1901}), 0, 0, {0x8086, 0x10D3});
    const auto up = bus.bridge(bus.rootPort(0, 2, 0, {0x8086, 0x1901}), 0, 0, {0x10B5, 0x8608}, 4);
    bus.bridge(up, 1, 0, {0x10B5, 0x8609}, 1);
    const auto port = bus.bridge(up, 2, 0, {0x10B5, 0x8609}, 4);
    const FileFolder folder;
    folder.write("bus.dump", bus.dump());
    bus.endpoint(port, 0, 0, {0x1172, 0xE001});
    folder.write("dump1", bus.dump());
    const auto result = watch(folder, {"A", "DUMP 1", ""}, "--lanes 4");
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_NE(folder.read("box.ini").find("\nConnectorLabels = HOST,A\n"), std::string::npos);
}

TEST(DescribeWatch, WithoutAnyConnectorNothingIsWritten) {
    const FileFolder folder;
    folder.write("bus.dump", box(false, false, false));
    const auto result = watch(folder, {"A", "s", ""});
    EXPECT_EQ(result.exitStatus, 1) << result.output;
    EXPECT_NE(result.output.find("no connector was found"), std::string::npos) << result.output;
    EXPECT_FALSE(folder.has("box.ini"));
}

TEST(DescribeWatch, BoxThatGoesAwayIsTold) {
    const FileFolder folder;
    folder.write("bus.dump", box(false, false, false));
    folder.write("dump1", "");
    const auto result = watch(folder, {"A", "DUMP 1"});
    EXPECT_EQ(result.exitStatus, 1) << result.output;
    EXPECT_NE(result.output.find("the box is no longer at MR00:00,10"), std::string::npos)
        << result.output;
}

TEST(DescribeWatch, AnswersThatEndEndTheList) {
    const auto result =
        runTavctlForOutput("describe 01:00.0 --watch --dump " + kSample + " </dev/null 2>&1");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.output.find("no connector was found"), std::string::npos) << result.output;
}

// A port that is there only while something is plugged in.
TEST(DescribeWatch, PortThatComesWithWhatIsPluggedInIsFound) {
    BusBuilder bus;
    bus.endpoint(bus.rootPort(0, 1, 0, {0x8086, 0x1901}), 0, 0, {0x8086, 0x10D3});
    const auto up = bus.bridge(bus.rootPort(0, 2, 0, {0x8086, 0x1901}), 0, 0, {0x10B5, 0x8608}, 4);
    const FileFolder folder;
    folder.write("bus.dump", bus.dump());
    bus.endpoint(bus.bridge(up, 3, 0, {0x10B5, 0x8608}, 4), 0, 0, {0x1172, 0xE001});
    folder.write("dump1", bus.dump());
    const auto result = watch(folder, {"A", "DUMP 1", ""});
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_NE(folder.read("box.ini").find("TraversalMapFromAnchor = d3f0\n"), std::string::npos);
}

TEST(DescribeWatch, WhatComesBesideThePortsIsInNoConnector) {
    BusBuilder bus;
    bus.endpoint(bus.rootPort(0, 1, 0, {0x8086, 0x1901}), 0, 0, {0x8086, 0x10D3});
    const auto up = bus.bridge(bus.rootPort(0, 2, 0, {0x8086, 0x1901}), 0, 0, {0x10B5, 0x8608}, 4);
    const FileFolder folder;
    folder.write("bus.dump", bus.dump());
    bus.endpoint(up, 9, 0, {0x1172, 0xE001});
    folder.write("dump1", bus.dump());
    const auto result = watch(folder, {"A", "DUMP 1", ""});
    EXPECT_EQ(result.exitStatus, 1) << result.output;
    EXPECT_NE(result.output.find("What has changed stands beside the ports of the box"),
              std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("no connector was found"), std::string::npos) << result.output;
}

TEST(DescribeWatch, WidthThatPromisesMoreConnectorsThanWereFoundIsTold) {
    const FileFolder folder;
    folder.write("bus.dump", box(false, false, false, 8));
    folder.write("dump1", box(true, false, false, 8));
    const auto result = watch(folder, {"A", "DUMP 1", ""}, "--lanes 4");
    EXPECT_EQ(result.exitStatus, 1) << result.output;
    EXPECT_NE(result.output.find("(02:00.0): port 03:01.0 has 8 lanes, which are 2 connectors of "
                                 "4, and has 1 label"),
              std::string::npos)
        << result.output;
}

TEST(DescribeWatch, BoxThatIsAnotherOneNowIsTold) {
    const FileFolder folder;
    folder.write("bus.dump", box(false, false, false));
    folder.write("dump1", box(true, false, false, 4, {0x10B5, 0x8609}));
    const auto result = watch(folder, {"A", "DUMP 1", ""});
    EXPECT_EQ(result.exitStatus, 1) << result.output;
    EXPECT_NE(result.output.find("it is not found by its identifiers"), std::string::npos)
        << result.output;
    EXPECT_NE(folder.read("box.ini").find("\nConnectorLabels = HOST,A\n"), std::string::npos);
}

} // namespace
