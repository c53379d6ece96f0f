// tavctl list of many recorded machines.
#include "tests/support/effort.h"
#include "tests/support/fileFolder.h"
#include "tests/support/fileText.h"
#include "tests/tavctl/runTavctl.h"
#include "tests/tavctl/sample.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <utility>

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using LabJson = nlohmann::json;

// Two racks, one recorded twice, and what a folder of recordings also has.
class CollectionTest : public testing::Test {
protected:
    CollectionTest() {
        for (const char* folder : {"lab", "lab/monday", "lab/tuesday"})
            fs::create_directory(folder_.file(folder));
        put("monday/rack1.dump", "renumbering-first.dump");
        put("tuesday/rack1.dump", "renumbering-added.dump");
        put("tuesday/rack2.dump", "conventional-bridges.dump");
    }

    void put(const std::string& name, const std::string& sample) const {
        fs::copy_file(kProject / "samples" / sample, folder_.file("lab/" + name));
    }
    std::string lab(const std::string& name = {}) const { return folder_.file("lab/" + name); }

    LabJson json(const std::string& options, int exitStatus = 0) const {
        const auto result = testsupport::runCommand(TAVCTL_FILE " list " + kDescriptions + options +
                                                    " --json 2>/dev/null");
        EXPECT_EQ(result.exitStatus, exitStatus) << result.output;
        return LabJson::parse(result.output);
    }

    testsupport::FileFolder folder_;
};

std::vector<std::string> members(const LabJson& list, const char* name) {
    std::vector<std::string> values;
    for (const LabJson& each : list)
        values.push_back(each[name]);
    return values;
}

TEST_F(CollectionTest, AFolderIsOneDocumentWithEveryMachine) {
    const LabJson whole = json("--dump " + lab());
    EXPECT_EQ(whole["version"], 1);
    EXPECT_THAT(members(whole["machines"], "machine"), ElementsAre("rack1", "rack1", "rack2"));
    EXPECT_THAT(members(whole["machines"], "recording"),
                ElementsAre(lab("monday/rack1.dump"), lab("tuesday/rack1.dump"),
                            lab("tuesday/rack2.dump")));
    for (const LabJson& each : whole["machines"])
        EXPECT_TRUE(each["failure"].is_null());
    EXPECT_THAT(members(whole["machines"][1]["devices"], "name"),
                ElementsAre("TAV1", "TAV2", "TAV3", "TAVCard1"));
    EXPECT_TRUE(whole["machines"][2]["devices"].empty());
}

// One look at many machines is as many looks at one.
TEST_F(CollectionTest, EachMachineIsListedAsByItself) {
    const LabJson whole = LabJson::parse(
        outputOf("list " + kDescriptions + "--json --dump " + (kProject / "samples").string()));
    std::size_t compared = 0;
    for (LabJson each : whole["machines"]) {
        if (!each["failure"].is_null())
            continue; // the folder has other files, too
        LabJson alone = json("--dump " + each["recording"].get<std::string>());
        alone.erase("version");
        for (const char* own : {"machine", "recording", "failure"})
            each.erase(own);
        EXPECT_EQ(each, alone);
        ++compared;
    }
    EXPECT_GE(compared, 12U);
}

TEST_F(CollectionTest, WhatAShellPutsForAPatternAreRecordingsAndTheRestDevices) {
    const std::string two = "--dump " + lab("monday/rack1.dump") + " " + lab("tuesday/rack1.dump");
    EXPECT_EQ(json(two)["machines"].size(), 2U);
    const LabJson named = json(two + " TAV3");
    EXPECT_TRUE(named["machines"][0]["devices"].empty());
    EXPECT_THAT(members(named["machines"][1]["devices"], "name"), ElementsAre("TAV3"));
}

TEST_F(CollectionTest, StandardInputIsARecordingWhereverItStands) {
    for (const std::string& dumps :
         {"- " + lab("tuesday"), lab("tuesday/rack1.dump") + " - " + lab("tuesday/rack2.dump"),
          lab("tuesday") + " -"}) {
        const LabJson whole = json("--dump " + dumps + " <" + lab("monday/rack1.dump"));
        EXPECT_EQ(whole["machines"].size(), 3U) << dumps;
        EXPECT_THAT(members(whole["machines"], "recording"), Contains("-")) << dumps;
    }
}

TEST_F(CollectionTest, ADeviceThatNoMachineHasIsTold) {
    const auto result = testsupport::runCommand(TAVCTL_FILE " list " + kDescriptions + "--dump " +
                                                lab() + " TAV3 rack3.dump 2>&1");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(result.output, HasSubstr("\nTAV3"));
    EXPECT_THAT(result.output,
                HasSubstr("tavctl: find device (rack3.dump): no machine has one of this name, "
                          "address or model, and no file is called so\n"));
    EXPECT_THAT(result.output, Not(HasSubstr("find device (TAV3)")));
    EXPECT_EQ(json("--dump " + lab() + " rack3.dump", 1)["machines"].size(), 3U);
}

// What a terminal shows that got this.
std::string shown(const std::string& written) {
    const std::string kCleared = "\033[K";
    std::string text;
    std::string line;
    for (std::size_t at = 0; at < written.size(); ++at) {
        if (written[at] == '\n') {
            text += std::exchange(line, {}) + "\n";
        } else if (written.compare(at, 4, "\r" + kCleared) == 0) {
            line.clear();
            at += kCleared.size();
        } else if (written[at] != '\r') {
            line += written[at];
        }
    }
    return text + line;
}

// What the command writes on a terminal that stops it for a second once it has printed something,
// so that the line of what is done is there.
std::string writtenOnATerminal(const testsupport::FileFolder& folder, const std::string& command) {
    const std::string written = folder.file("written");
    const std::string process = folder.file("process");
    const std::string begin = folder.file("begin.sh");
    fs::remove(written);
    std::ofstream(begin) << command << " &\necho $! >" << process << "\nwait\n";
    const std::string script = folder.file("stopped.sh");
    std::ofstream(script) << "NO_COLOR=1 script -qfec 'sh " << begin << "' " << written
                          << " >/dev/null </dev/null &\n"
                          << "for wait in $(seq 1000); do\n"
                          << "    grep -qs TAV1 " << written << " && break\n"
                          << "    sleep 0.01\n"
                          << "done\n"
                          << "kill -STOP $(cat " << process << ")\n"
                          << "sleep 1.1\n"
                          << "kill -CONT $(cat " << process << ")\n"
                          << "wait\n";
    EXPECT_EQ(testsupport::runCommand("sh " + script).exitStatus, 0);
    return testsupport::fileText(written);
}

TEST_F(CollectionTest, OnATerminalTheLineOfWhatIsDoneIsInNobodysWay) {
    const int machines = testsupport::isSanitized() ? 300 : 3'000;
    put("full0.dump", "full-bus.dump");
    for (int i = 1; i < machines; ++i)
        fs::create_hard_link(lab("full0.dump"), lab("full" + std::to_string(i) + ".dump"));
    for (const char* verb : {" list ", " names preview "}) {
        const std::string command = TAVCTL_FILE + (verb + kDescriptions) + "--dump " + lab();
        const std::string terminal = writtenOnATerminal(folder_, command);
        EXPECT_THAT(terminal, HasSubstr("\r\033[Ktavctl: looking at recordings [")) << verb;
        EXPECT_THAT(shown(terminal), HasSubstr(testsupport::runCommand(command + " 2>&1").output));
    }
}

TEST_F(CollectionTest, OneDumpIsListedAsItAlwaysWas) {
    const LabJson one = json("--dump " + lab("monday/rack1.dump") + " TAV1");
    EXPECT_FALSE(one.contains("machines"));
    EXPECT_EQ(one["devices"].size(), 1U);
}

TEST_F(CollectionTest, AFolderWithOneRecordingIsACollectionAllTheSame) {
    EXPECT_EQ(json("--dump " + lab("monday"))["machines"].size(), 1U);
}

TEST_F(CollectionTest, NamesBesideARecordingAreItsNames) {
    const std::string state = folder_.file("state");
    fs::create_directory(state);
    ASSERT_EQ(runTavctl("list " + kDescriptions + "--state " + state + " --dump " +
                        lab("tuesday/rack1.dump"))
                  .exitStatus,
              0);
    ASSERT_EQ(runTavctl("names rename TAV2 TAV9 " + kDescriptions + "--state " + state +
                        " --dump " + lab("tuesday/rack1.dump"))
                  .exitStatus,
              0);
    const std::string stored = testsupport::fileText(fs::path(state) / "zotavpci.ini");
    folder_.write("lab/monday/rack1.ini", stored);
    const LabJson machine = json("--dump " + lab())["machines"][0];
    EXPECT_THAT(members(machine["devices"], "name"), ElementsAre("TAV9", "TAV3", "TAVCard1"));
    for (const LabJson& device : machine["devices"])
        EXPECT_TRUE(device["stored"]) << device;
    EXPECT_THAT(members(machine["absent"], "name"), ElementsAre("TAV1"));
    // Nothing is written.
    EXPECT_EQ(folder_.read("lab/monday/rack1.ini"), stored);
}

TEST_F(CollectionTest, WhatCannotBeReadIsToldAndTheOthersAreListed) {
    folder_.write("lab/monday/notes.txt", "This is no bus.\n");
    const LabJson whole = json("--dump " + lab(), 3);
    ASSERT_EQ(whole["machines"].size(), 4U);
    const LabJson& notes = whole["machines"][0];
    EXPECT_EQ(notes["machine"], "notes");
    EXPECT_EQ(notes["failure"]["operation"], "read the bus");
    EXPECT_EQ(notes["failure"]["object"], lab("monday/notes.txt"));
    EXPECT_TRUE(notes["leftOut"].is_null());
    EXPECT_TRUE(notes["devices"].empty());
    const auto text = runTavctl("list " + kDescriptions + "--dump " + lab());
    EXPECT_TRUE(says(text, 3, "tavctl: read the bus (" + lab("monday/notes.txt") + "): "));
    EXPECT_THAT(text.output, HasSubstr(lab("tuesday/rack1.dump") + "\nNAME"));
}

TEST_F(CollectionTest, PeopleReadATableForEachMachine) {
    const std::string text = runTavctl("list " + kDescriptions + "--dump " + lab()).output;
    EXPECT_THAT(text, HasSubstr(lab("monday/rack1.dump") +
                                "\nNAME       MODEL                ADDRESS  CATEGORY"));
    EXPECT_THAT(text, HasSubstr("\n\n" + lab("tuesday/rack2.dump") +
                                "\n"
                                "has no described device\n"));
    EXPECT_THAT(text, HasSubstr("tavctl: names with * would be given, and are not stored\n"));
}

TEST_F(CollectionTest, AFilterLeavesOutMachinesThatHaveNothingOfTheKind) {
    const auto card = runTavctl("list " + kDescriptions + "--category PCI --dump " + lab());
    EXPECT_TRUE(says(card, 0, lab("monday/rack1.dump")));
    EXPECT_THAT(card.output, Not(HasSubstr("rack2")));
    EXPECT_TRUE(says(runTavctl("list TAV77 " + kDescriptions + "--dump " + lab()), 1,
                     "tavctl: find device (TAV77): no machine has one"));
    EXPECT_TRUE(says(runTavctl("list --category Expresscard " + kDescriptions + "--dump " + lab()),
                     1, "tavctl: no device is as asked for\n"));
}

TEST_F(CollectionTest, DegradedLinksAreAProblem) {
    put("tuesday/rack3.dump", "switchboxes.dump");
    const auto degraded = runTavctl("list --degraded " + kDescriptions + "--dump " + lab());
    EXPECT_TRUE(says(degraded, 1, lab("tuesday/rack3.dump")));
    EXPECT_THAT(degraded.output, Not(HasSubstr("rack2")));
    fs::remove(lab("tuesday/rack3.dump"));
    EXPECT_TRUE(says(runTavctl("list --degraded " + kDescriptions + "--dump " + lab()), 0,
                     "tavctl: no device is as asked for\n"));
}

TEST_F(CollectionTest, RefusesOneStateForMany) {
    EXPECT_TRUE(says(runTavctl("list --state " + lab() + " " + kDescriptions + "--dump " + lab()),
                     2, "tavctl: list (--state): many machines have no names in common"));
}

TEST_F(CollectionTest, AFaultyDescriptionEndsItAsItEndsAHost) {
    const auto faulty = folder_.file("faulty");
    fs::create_directories(fs::path(faulty) / "PCI Hardware Descriptions");
    folder_.write("faulty/PCI Hardware Descriptions/a.ini", "[PciModel]\n");
    const auto result = runTavctl("list --descriptions " + faulty + " --dump " + lab());
    EXPECT_TRUE(says(result, 3, "a.ini"));
}

TEST_F(CollectionTest, FoldersInAFolderAreNotFollowedThroughLinks) {
    fs::create_directory_symlink(lab(), lab("again"));
    fs::create_symlink(lab("monday/rack1.dump"), lab("linked.dump"));
    EXPECT_THAT(members(json("--dump " + lab())["machines"], "machine"),
                ElementsAre("linked", "rack1", "rack1", "rack2"));
}

} // namespace
