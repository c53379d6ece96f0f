// tavctl names rename and forget: names change only as they are told to, and nothing else does.
#include "tests/tavctl/names/namesOfSample.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;

std::string stored(const std::string& slot, const std::string& name,
                   const std::string& more = std::string()) {
    return "[" + slot + "]\r\n" + more + "Model = TAV-B3 Switch Box\r\nTerminalName = " + name +
           "\r\n";
}

class NamesChange : public testing::Test {
protected:
    [[nodiscard]] testsupport::CommandResult run(const std::string& words) const {
        return runTavctl("names " + words + " " + names_.options);
    }
    [[nodiscard]] std::string listed() const { return runTavctl("list " + names_.options).output; }
    [[nodiscard]] std::string before() const {
        return names_.folder.read("state/zotavpci.ini.before");
    }
    // With the names as they are, and nothing kept of before.
    void expectRefused(const std::string& words, const std::string& sentence) const {
        const std::string names = names_.stored();
        const auto result = run(words);
        EXPECT_TRUE(says(result, 1, sentence)) << words;
        EXPECT_EQ(names_.stored(), names) << words;
        EXPECT_FALSE(fs::exists(names_.folder.file("state/zotavpci.ini.before"))) << words;
    }

    NamesOfSample names_;
    std::string file_ = names_.folder.file("state/zotavpci.ini");
    std::string first_ = names_.stored();
};

class NamesRename : public NamesChange {};
class NamesForget : public NamesChange {};

TEST_F(NamesRename, IsWhatAHostReportsFromThenOn) {
    EXPECT_TRUE(says(run("rename TAV1 TAV7"), 0, "renamed TAV1 to TAV7: " + file_ + "\n"));
    EXPECT_EQ(before(), first_);
    EXPECT_EQ(listed(),
              "NAME      MODEL                   ADDRESS  CATEGORY      PORTS\n"
              "TAV7      TAV-B3 Switch Box       01:00.0  SwitchboxTav  1,2,3\n"
              "TAV2      TAV-B3 Switch Box       09:00.0  SwitchboxTav  1,2,3\n"
              "TAVCard1  TAV-C1 Adapter Card     04:00.0  PCI           LEFT,RIGHT\n"
              "TAV3      TAV-W7 Wide Switch Box  41:00.0  SwitchboxTav  A1,B1,B2,C1,C2,C3,C4\n");
    EXPECT_TRUE(says(run("undo"), 0, "restored 4 names: "));
    EXPECT_EQ(names_.stored(), first_);
    EXPECT_NE(listed().find("TAV1      TAV-B3 Switch Box       01:00.0"), std::string::npos);
}

TEST_F(NamesRename, LeavesEverythingElseAsItIs) {
    names_.store(stored("MR00:00,28", "TAV1", "Note = by hand\r\n") + "\r\n" +
                 stored("MR00:00,20", "TAV2") + "\r\n[other]\r\nKey = Value\r\n");
    const std::string old = names_.stored();
    EXPECT_EQ(outputOf("names rename --json TAV2 TAV4294967295 " + names_.options),
              R"({"version":1,"renamed":[{"from":"TAV2","to":"TAV4294967295",)"
              R"("slotPath":"MR00:00,20"}]})"
              "\n");
    std::string expected = old;
    expected.replace(expected.find("TAV2"), 4, "TAV4294967295");
    EXPECT_EQ(names_.stored(), expected);
    EXPECT_EQ(before(), old);
}

TEST_F(NamesRename, ExchangesTwoNamesOnlyWhenTold) {
    expectRefused("rename TAV2 TAV3",
                  "tavctl: rename a terminal name (TAV2): TAV3 is the name of MR40:00,08; --swap "
                  "exchanges the two names\n");
    expectRefused("rename --swap TAV2 TAV9",
                  "(TAV2): no slot has the name TAV9 to exchange it with; without --swap it is "
                  "given\n");
    EXPECT_TRUE(
        says(run("rename --swap TAV2 TAV3"), 0, "exchanged TAV2 and TAV3: " + file_ + "\n"));
    const std::string names = listed();
    EXPECT_NE(names.find("TAV3      TAV-B3 Switch Box       09:00.0"), std::string::npos) << names;
    EXPECT_NE(names.find("TAV2      TAV-W7 Wide Switch Box  41:00.0"), std::string::npos) << names;
    EXPECT_EQ(outputOf("names rename TAV2 TAV3 --swap --json " + names_.options),
              R"({"version":1,"renamed":[{"from":"TAV2","to":"TAV3","slotPath":"MR40:00,08"},)"
              R"({"from":"TAV3","to":"TAV2","slotPath":"MR00:00,28"}]})"
              "\n");
    EXPECT_EQ(names_.stored(), first_);
}

TEST_F(NamesRename, TakesOnlyNamesThatAHostKnowsAgain) {
    for (const char* wrong : {"TAV", "TAV0", "TAV01", "T2AV1", "TAV1x", "TAVCard2", "BOX1", "7"})
        expectRefused(std::string("rename TAV1 ") + wrong,
                      std::string("(TAV1): \"") + wrong +
                          "\" is not its base \"TAV\" and a number from 1 upwards");
    expectRefused("rename TAV1 TAV" + std::string(253, '1'), "has more than 255 bytes\n");
    EXPECT_EQ(run("rename TAV1 TAV" + std::string(252, '1')).exitStatus, 0);
    EXPECT_TRUE(says(runTavctl("list -v " + names_.options), 0, "TAV" + std::string(252, '1')));
}

TEST_F(NamesRename, RepairsANameThatIsMalformed) {
    names_.store(stored("MR00:00,20", "TAV007"));
    EXPECT_EQ(run("rename TAV007 TAV7").exitStatus, 0);
    EXPECT_EQ(names_.stored(), stored("MR00:00,20", "TAV7"));
}

TEST_F(NamesRename, OfANameToItselfChangesNothing) {
    const auto time = fs::last_write_time(file_);
    EXPECT_TRUE(says(run("rename TAV1 TAV1"), 0,
                     "tavctl: nothing to rename: TAV1 is the name of MR00:00,20 already\n"));
    EXPECT_EQ(outputOf("names rename --swap --json TAV1 TAV1 " + names_.options),
              "{\"version\":1,\"renamed\":[]}\n");
    EXPECT_EQ(fs::last_write_time(file_), time);
    EXPECT_FALSE(fs::exists(file_ + ".before"));
}

TEST_F(NamesChange, OfANameThatNobodyHasProposesTheNearest) {
    expectRefused("rename TAVCrad1 TAVCard2", "tavctl: rename a terminal name (TAVCrad1): no slot "
                                              "has this name; did you mean \"TAVCard1\"?\n");
    expectRefused("forget elsewhere",
                  "tavctl: forget a terminal name (elsewhere): no slot has this name\n");
    const NamesOfSample none(false);
    EXPECT_TRUE(says(runTavctl("names rename TAV1 TAV2 " + none.options), 1,
                     "(TAV1): no slot has this name\n"));
    EXPECT_FALSE(fs::exists(none.folder.file("state/zotavpci.ini")));
}

TEST_F(NamesChange, OfANameThatTwoSlotsHaveIsRefused) {
    names_.store(stored("MR00:00,20", "TAV1") + stored("MR00:77", "TAV1") +
                 stored("MR00:00,28", "TAV2"));
    const std::string both =
        "(TAV1): MR00:00,20 and MR00:77 both have this name\n  see: tavctl names check\n";
    expectRefused("rename TAV1 TAV5", both);
    expectRefused("rename TAV2 TAV1 --swap", both);
    expectRefused("forget --force TAV1", both);
}

// As the plug-in does it: a line stays a line, and the name is found again.
TEST_F(NamesChange, KeepsTextsEscaped) {
    const std::string old = R"(A\"\\\x07\t)";
    names_.store(stored("MR00:00,20", old + "1"));
    const std::string typed = "\"$(printf 'A\"\\\\\\007\\t')";
    EXPECT_EQ(run("rename " + typed + "1\" " + typed + "12\"").exitStatus, 0);
    EXPECT_EQ(names_.stored(), stored("MR00:00,20", old + "12"));
    EXPECT_TRUE(says(run("forget --force " + typed + "12\""), 0, R"(forgot A"\\x07)"));
    EXPECT_EQ(names_.stored(), "");
}

TEST_F(NamesForget, FreesTheNameOfADeviceThatIsGone) {
    const std::string gone = stored("MR00:77", "TAV4", "Note = by hand\r\n");
    names_.store(gone + "\r\n" + first_);
    EXPECT_TRUE(
        says(run("forget TAV4"), 0, "forgot TAV4 (TAV-B3 Switch Box, MR00:77): " + file_ + "\n"));
    EXPECT_EQ(names_.stored(), first_);
    EXPECT_EQ(before(), gone + "\r\n" + first_);
    EXPECT_TRUE(says(run("undo"), 0, "restored 5 names: "));
    EXPECT_EQ(names_.stored(), gone + "\r\n" + first_);
}

TEST_F(NamesForget, OfADeviceThatIsThereTakesForce) {
    expectRefused("forget TAV3",
                  "tavctl: forget a terminal name (TAV3): its device (TAV-W7 Wide Switch Box, "
                  "MR40:00,08) would be given a new name; --force forgets it all the same\n");
    EXPECT_EQ(outputOf("names forget --force --json TAV1 " + names_.options),
              R"({"version":1,"forgotten":[{"name":"TAV1","model":"TAV-B3 Switch Box",)"
              R"("slotPath":"MR00:00,20"}]})"
              "\n");
    EXPECT_EQ(names_.stored(), first_.substr(first_.find("[MR00:00,28]")));
}

TEST_F(NamesForget, OfASlotThatHasAnotherDeviceNowNeedsNoForce) {
    names_.store("[MR00:00,20]\r\nModel = Other\r\nTerminalName = OTHER1\r\n[MR00:78]\r\n"
                 "TerminalName = X1\r\n");
    EXPECT_TRUE(says(run("forget OTHER1"), 0, "forgot OTHER1 (Other, MR00:00,20): "));
    EXPECT_TRUE(says(run("forget X1"), 0, "forgot X1 (MR00:78): "));
    EXPECT_EQ(names_.stored(), "");
}

TEST_F(NamesForget, CountsEveryNameAsPresentWhereTheDevicesAreNotKnown) {
    names_.store(stored("MR00:77", "TAV4"));
    const std::string refusal = "so every stored name counts: its device (TAV-B3 Switch Box, "
                                "MR00:77) would be given a new name; --force ";
    expectRefused("forget --stored TAV4", "(TAV4): the bus is not looked at, " + refusal);
    const std::string damaged = names_.folder.write("damaged.dump", "00:00.0\n00: zz\n");
    const std::string words = "names forget TAV4 --dump " + damaged + " " + kDescriptions +
                              "--state " + names_.folder.file("state");
    EXPECT_TRUE(says(runTavctl(words), 1, "(TAV4): the devices cannot be looked for ("));
    EXPECT_TRUE(says(runTavctl(words), 1, "), " + refusal));
    EXPECT_EQ(runTavctl(words + " --force").exitStatus, 0);
    EXPECT_EQ(names_.stored(), "");
}

TEST_F(NamesChange, WithoutAPlaceForTheNamesBeforeChangesNothing) {
    fs::create_directory(file_ + ".before");
    for (const char* words : {"rename TAV1 TAV7", "forget --force TAV1"}) {
        EXPECT_TRUE(says(run(words), 3, "tavctl: keep terminal names (")) << words;
        EXPECT_EQ(names_.stored(), first_) << words;
    }
}

// One is done when the other has the lock; neither is lost.
TEST_F(NamesChange, ManyAtATimeAreAllDone) {
    const std::string tavctl = TAVCTL_FILE " names rename ";
    const auto renamed = testsupport::runCommand(
        "for i in 1 2 3 4 5; do " + tavctl + "TAV1 TAV1$i " + names_.options +
        ">/dev/null 2>&1 & " + tavctl + "TAV2 TAV2$i " + names_.options + ">/dev/null 2>&1 & " +
        tavctl + "TAV3 TAV3$i " + names_.options + ">/dev/null 2>&1 & done; wait");
    ASSERT_EQ(renamed.exitStatus, 0);
    const std::string now = names_.stored();
    for (const char* name : {"TerminalName = TAV1", "TerminalName = TAV2", "TerminalName = TAV3"}) {
        const std::size_t at = now.find(name);
        ASSERT_NE(at, std::string::npos) << now;
        EXPECT_NE(now.at(at + std::string(name).size()), '\r') << now;
    }
}

} // namespace
