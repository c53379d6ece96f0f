// tavctl names as a person runs it.
#include "tests/tavctl/names/namesOfSample.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;

constexpr const char* kTable = "NAME      PRESENT  MODEL                   SLOT PATH\n"
                               "TAV1      yes      TAV-B3 Switch Box       MR00:00,20\n"
                               "TAV2      yes      TAV-B3 Switch Box       MR00:00,28\n"
                               "TAVCard1  yes      TAV-C1 Adapter Card     MR00:08,00,08,00,20\n"
                               "TAV3      yes      TAV-W7 Wide Switch Box  MR40:00,08\n";

TEST(NamesCommand, ListsSlotPathModelAndPresence) {
    const NamesOfSample names;
    EXPECT_EQ(runTavctl("names " + names.options).output, kTable);
    EXPECT_EQ(runTavctl("names list " + names.options).output, kTable);
}

TEST(NamesCommand, StoredNamesAreListedWithoutABus) {
    const NamesOfSample names;
    const auto result = runTavctl("names list --stored --state " + names.folder.file("state"));
    EXPECT_TRUE(says(result, 0, "TAV3      ?        TAV-W7 Wide Switch Box  MR40:00,08\n"));
}

TEST(NamesCommand, ListsNamesOfAbsentDevicesAsJsonAndAsTable) {
    const NamesOfSample names;
    names.store(
        "[MR00:00,28]\nModel = TAV-B3 Switch Box\nTerminalName = TAV1\n[MR00:77]\nModel=X\n");
    EXPECT_EQ(outputOf("names --json " + names.options),
              R"({"version":1,)"
              R"("leftOut":{"otherDomains":0,"dead":0,"unreadable":0,"headerOnly":0},)"
              R"("names":[{"name":"TAV1","model":"TAV-B3 Switch Box",)"
              R"("slotPath":"MR00:00,28","presence":"present"},{"name":"","model":"X",)"
              R"("slotPath":"MR00:77","presence":"absent"}]})"
              "\n");
    EXPECT_EQ(outputOf("names " + names.options), "NAME  PRESENT  MODEL              SLOT PATH\n"
                                                  "TAV1  yes      TAV-B3 Switch Box  MR00:00,28\n"
                                                  "-     no       X                  MR00:77\n");
}

TEST(NamesCommand, NoNamesAreSaidOnStandardErrorAndNothingIsMade) {
    const NamesOfSample names(false);
    EXPECT_TRUE(says(runTavctl("names " + names.options), 0, "tavctl: no names are stored in "));
    EXPECT_EQ(outputOf("names " + names.options), "");
    EXPECT_TRUE(fs::is_empty(names.folder.file("state")));
}

TEST(NamesCommand, CheckExitsWithOneWhenItFindsSomething) {
    const NamesOfSample names;
    EXPECT_TRUE(says(runTavctl("names check " + names.options), 0, "no problem with 4 names"));
    names.store("[MR00:00,20]\nModel = TAV-B3 Switch Box\nTerminalName = TAV1\n"
                "[MR00:77]\nModel = X\nTerminalName = TAV1\n");
    const std::string file = names.folder.file("state/zotavpci.ini");
    EXPECT_TRUE(says(runTavctl("names check " + names.options), 1,
                     file + ":4: [MR00:77] TAV1: duplicate: this is the name of MR00:00,20 too\n" +
                         file + ":4: [MR00:77] TAV1: stale: no device is in this slot\n"));
    EXPECT_TRUE(says(runTavctl("names check --stored --json " + names.options), 1,
                     R"({"version":1,"leftOut":null,"problems":[{"kind":"duplicate","file":")" +
                         file +
                         R"(","line":4,"slotPath":"MR00:77","name":"TAV1",)"
                         R"("message":"this is the name of MR00:00,20 too"}]})"
                         "\n"));
}

TEST(NamesCommand, RestorePutsBackWhatBackupSaved) {
    const NamesOfSample names;
    const std::string before = names.stored();
    const std::string saved = names.folder.file("saved.ini");
    EXPECT_TRUE(says(runTavctl("names backup " + saved + " " + names.options), 0,
                     "saved 4 names: " + saved + "\n"));
    EXPECT_EQ(names.folder.read("saved.ini"), before);
    names.store("");
    EXPECT_TRUE(says(runTavctl("names restore " + saved + " " + names.options), 0,
                     "restored 4 names: " + names.folder.file("state/zotavpci.ini") + "\n"));
    EXPECT_EQ(names.stored(), before);
    EXPECT_EQ(runTavctl("names " + names.options).output, kTable);
}

TEST(NamesCommand, RestoreWorksOnAFreshFolder) {
    const NamesOfSample names(false);
    const std::string saved =
        names.folder.write("saved.ini", "[MR00:00,20]\nModel = TAV-B3 Switch Box\nTerminalName = "
                                        "TAV7\n");
    EXPECT_TRUE(says(runTavctl("names restore --json " + saved + " " + names.options), 0,
                     "{\"version\":1,\"restored\":1}\n"));
    EXPECT_TRUE(
        says(runTavctl("list " + names.options), 0, "TAV7      TAV-B3 Switch Box       01:00"));
}

TEST(NamesCommand, BackupReplacesAFileOnlyWhenForced) {
    const NamesOfSample names;
    const std::string saved = names.folder.write("saved.ini", "precious");
    EXPECT_TRUE(says(runTavctl("names backup " + saved + " " + names.options), 3,
                     "(" + saved + "): the file exists; --force replaces it"));
    EXPECT_EQ(names.folder.read("saved.ini"), "precious");
    EXPECT_TRUE(
        says(runTavctl("names backup --force " + saved + " " + names.options), 0, "saved 4"));
    EXPECT_EQ(names.folder.read("saved.ini"), names.stored());
}

TEST(NamesCommand, RestoreTakesMalformedNamesOnlyWhenForced) {
    const NamesOfSample names;
    const std::string before = names.stored();
    const std::string saved = names.folder.write("saved.ini", "[box]\nModel = X\n");
    const auto refused = runTavctl("names restore " + saved + " " + names.options);
    EXPECT_TRUE(says(refused, 1, saved + ":1: [box] malformed: "));
    EXPECT_TRUE(says(refused, 1, "--force takes them"));
    EXPECT_EQ(names.stored(), before);
    EXPECT_TRUE(
        says(runTavctl("names restore --force " + saved + " " + names.options), 0, "1 name:"));
    EXPECT_EQ(names.stored(), "[box]\r\nModel = X\r\n");
}

TEST(NamesCommand, PreviewOfNoChangeStaysAndWritesNothing) {
    const NamesOfSample names;
    const auto time = fs::last_write_time(names.folder.file("state/zotavpci.ini"));
    EXPECT_TRUE(says(runTavctl("names preview " + names.options), 0,
                     "TAV3      stays   TAV-W7 Wide Switch Box  MR40:00,08\n"));
    EXPECT_EQ(fs::last_write_time(names.folder.file("state/zotavpci.ini")), time);
}

TEST(NamesCommand, PreviewOfTheFirstStartIsAllNewAndMakesNoFile) {
    const NamesOfSample names(false);
    EXPECT_TRUE(says(runTavctl("names preview " + names.options), 0,
                     "TAV1      new     TAV-B3 Switch Box       MR00:00,20\n"));
    EXPECT_TRUE(fs::is_empty(names.folder.file("state")));
}

TEST(NamesCommand, PreviewOfOtherDescriptionsTellsChangesAndExitsWithOne) {
    const NamesOfSample names;
    const std::string before = names.stored();
    const std::string folder = names.folder.file("new/PCI Hardware Descriptions");
    fs::create_directories(folder);
    fs::copy(TAV_SOURCE_DIR "/descriptions/PCI Hardware Descriptions/tav-b3-switch-box.ini",
             folder);
    std::string text = names.folder.read("new/PCI Hardware Descriptions/tav-b3-switch-box.ini");
    names.folder.write(
        "new/PCI Hardware Descriptions/tav-b3-switch-box.ini",
        text.replace(text.find("TerminalNameBase = TAV"), 22, "TerminalNameBase = BOX"));
    const auto result = runTavctl("names preview --new-descriptions " + names.folder.file("new") +
                                  " " + names.options);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output,
              "NAME      CHANGE             MODEL                   SLOT PATH\n"
              "BOX1      changes, was TAV1  TAV-B3 Switch Box       MR00:00,20\n"
              "BOX2      changes, was TAV2  TAV-B3 Switch Box       MR00:00,28\n"
              "TAVCard1  gone               TAV-C1 Adapter Card     MR00:08,00,08,00,20\n"
              "TAV3      gone               TAV-W7 Wide Switch Box  MR40:00,08\n");
    EXPECT_EQ(names.stored(), before);
}

TEST(NamesCommand, PreviewOfAnotherBusAsJson) {
    const NamesOfSample names;
    const std::string empty = names.folder.write("empty.dump", "");
    const auto result = runTavctl("names preview --json --new-dump " + empty + " " + names.options);
    EXPECT_TRUE(says(result, 1,
                     R"("names":[{"name":"TAV1","change":"gone","before":null,)"
                     R"("model":"TAV-B3 Switch Box","slotPath":"MR00:00,20"},)"));
}

TEST(NamesCommand, PreviewGoesOnWhenTodaysDescriptionsAreFaulty) {
    const NamesOfSample names;
    fs::create_directories(names.folder.file("bad/PCI Hardware Descriptions"));
    names.folder.write("bad/PCI Hardware Descriptions/a.ini", "[UpstreamTAV]\n");
    const auto result =
        runTavctl("names preview " + kDump + "--descriptions " + names.folder.file("bad") +
                  " --new-descriptions " TAV_SOURCE_DIR "/descriptions --state " +
                  names.folder.file("state"));
    EXPECT_TRUE(says(result, 0, "tavctl: what would be gone is not known: load description ("));
    EXPECT_TRUE(says(result, 0, "TAV1      stays "));
}

TEST(NamesCommand, FaultyDescriptionsAreNamed) {
    const NamesOfSample names;
    fs::create_directories(names.folder.file("bad/PCI Hardware Descriptions"));
    names.folder.write("bad/PCI Hardware Descriptions/a.ini", "[UpstreamTAV]\n");
    EXPECT_TRUE(says(runTavctl("names check " + kDump + "--descriptions " +
                               names.folder.file("bad") + " --state " + names.folder.file("state")),
                     3,
                     "bad/PCI Hardware Descriptions/a.ini:1:2): [UpstreamTAV] has no key Model; "));
}

TEST(NamesCommand, LockThatCannotBeTakenIsNamed) {
    const NamesOfSample names(false);
    fs::create_directory(names.folder.file("state/zotavpci.loc"));
    EXPECT_TRUE(says(runTavctl("names " + names.options), 3,
                     "tavctl: lock terminal names (" + names.folder.file("state/zotavpci.loc") +
                         "): Is a directory"));
}

TEST(NamesCommand, WrongWordsAreNamed) {
    EXPECT_TRUE(
        says(runTavctl("names chek"), 2, "(chek): unknown command; did you mean \"check\"?"));
    EXPECT_TRUE(says(runTavctl("names restore"), 2, "FILE is required"));
}

TEST(NamesCommand, LeavesNoTemporaryFolderBehind) {
    const NamesOfSample names;
    const std::string scratch = names.folder.file("scratch");
    fs::create_directory(scratch);
    EXPECT_EQ(testsupport::runCommand("TMPDIR=" + scratch + " " TAVCTL_FILE " names check " +
                                      names.options + " 2>&1")
                  .exitStatus,
              0);
    EXPECT_TRUE(fs::is_empty(scratch));
}

} // namespace
