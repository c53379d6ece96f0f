// tavctl record as a person runs it.
#include "tests/support/busBuilder.h"
#include "tests/support/environmentValue.h"
#include "tests/support/fileFolder.h"
#include "tests/support/machines.h"
#include "tests/tavctl/runTavctl.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;
using testsupport::FileFolder;

std::string listing(const FileFolder& folder, const std::string& bus) {
    const std::string state = folder.file("state-" + fs::path(bus).filename().string());
    fs::create_directory(state);
    return outputOf("list --json --dump " + bus + " " + kDescriptions + "--state " + state);
}

TEST(RecordCommand, RecordingAndScrubbedRecordingGiveTheSameList) {
    const FileFolder folder;
    const std::string sample = TAV_SOURCE_DIR "/samples/switchboxes.dump";
    const std::string expected = listing(folder, sample);
    ASSERT_NE(expected.find("TAVCard1"), std::string::npos);
    for (const std::string option : {"", "--scrub "}) {
        const std::string file = folder.file("recorded" + option.substr(0, 3) + ".txt");
        EXPECT_TRUE(
            says(runTavctl("record --force " + option + "-o " + file + " " + kDump), 0, ""));
        EXPECT_EQ(listing(folder, file), expected) << option;
    }
}

// What an ordinary user may read of a live bus: headers, and the other files of sysfs.
TEST(RecordCommand, ConvertsACopiedTreeOfSysfsFiles) {
    const FileFolder folder;
    testsupport::BusBuilder machine;
    const auto root = machine.rootPort(0, 4, 0, {0x8086, 0x3420, 0x8086, 0});
    const auto up = machine.bridge(root, 0, 0, {0x104C, 0x8232, 0, 0}, 1, 1);
    for (unsigned port = 0; port < 3; ++port)
        machine.bridge(up, port, 0, {0x104C, 0x8233, 0, 0}, 1, 1);
    fs::create_directory(folder.file("sys"));
    machine.writeSysfs(folder.file("sys"));
    const std::string expected = listing(folder, folder.file("sys"));
    ASSERT_NE(expected.find("TAV-B3 Switch Box"), std::string::npos) << expected;
    const std::string file =
        folder.write("bus.txt", outputOf("record --dump " + folder.file("sys")));
    EXPECT_EQ(listing(folder, file), expected);
}

// The reader of lspci has no rule for comments; it must pass over ours as over any other text.
TEST(RecordCommand, RecordingIsReadByLspci) {
    const FileFolder folder;
    const testsupport::machines::Switch machine;
    fs::create_directory(folder.file("sys"));
    machine.bus.writeSysfs(folder.file("sys"));
    const std::string whole = folder.write("whole.txt", machine.bus.dump());
    for (const std::string option : {"", "--scrub "}) {
        const std::string file = folder.file("recorded" + option.substr(0, 3) + ".txt");
        EXPECT_TRUE(says(
            runTavctl("record --force " + option + "-o " + file + " --dump " + folder.file("sys")),
            0, ""));
        const auto tree = testsupport::runCommand("lspci -t -F " + file + " 2>&1");
        EXPECT_EQ(tree.output, testsupport::runCommand("lspci -t -F " + whole + " 2>&1").output);
        EXPECT_NE(tree.output.find("1c.0-[01-04]----00.0-[02-04]--+-01.0-[03]--+-00.0"),
                  std::string::npos)
            << tree.output;
    }
}

TEST(RecordCommand, RecordingOfSeveralDomainsIsReadByLspciAndByList) {
    const FileFolder folder;
    const testsupport::machines::Switch machine;
    const std::string whole = folder.write("whole.txt", machine.bus.dump({.domain = 0}) +
                                                            machine.bus.dump({.domain = 1}) +
                                                            machine.bus.dump({.domain = 0x10000}));
    const std::string expected = testsupport::runCommand("lspci -nD -F " + whole).output;
    ASSERT_NE(expected.find("10000:03:00.0"), std::string::npos) << expected;
    for (const std::string option : {"", "--scrub "}) {
        const std::string file = folder.file("recorded" + option.substr(0, 3) + ".txt");
        EXPECT_EQ(runTavctl("record " + option + "-o " + file + " --dump " + whole).output, "");
        const std::string tree = testsupport::runCommand("lspci -t -F " + file + " 2>&1").output;
        EXPECT_EQ(tree, testsupport::runCommand("lspci -t -F " + whole + " 2>&1").output);
        if (option.empty()) {
            EXPECT_EQ(testsupport::runCommand("lspci -nD -F " + file + " 2>&1").output, expected);
        }
        EXPECT_NE(listing(folder, file).find(R"("otherDomains":20)"), std::string::npos);
    }
}

TEST(RecordCommand, TellsWhatItLeavesOut) {
    const FileFolder folder;
    testsupport::machines::Switch machine;
    machine.bus.poke(machine.second, 0, {0xFF, 0xFF});
    const std::string file = folder.write("whole.txt", machine.bus.dump());
    const std::string expected = "left out: 1 function that does not answer (vendor FFFF)\n";
    for (const std::string option : {"", "--scrub "}) {
        const auto result = runTavctl("record " + option + "--dump " + file);
        EXPECT_TRUE(says(result, 0, "tavctl: " + expected));
        EXPECT_TRUE(says(result, 0, "\n# " + expected));
    }
}

TEST(RecordCommand, UnreadableBusAndUnwritableFileAreNamed) {
    EXPECT_TRUE(says(runTavctl("record --dump /nonexistent"), 3,
                     "tavctl: read the bus (/nonexistent): /nonexistent: No such file"));
    EXPECT_TRUE(says(runTavctl("record -o /nonexistent/x " + kDump), 3,
                     "tavctl: write result (/nonexistent/x): No such file or directory\n"));
}

// By way of a link, which is all that a faulty program could remove.
TEST(RecordCommand, FullDeviceIsToldAndNotRemoved) {
    const FileFolder folder;
    const std::string full = folder.file("full");
    fs::create_symlink("/dev/full", full);
    EXPECT_TRUE(says(runTavctl("record -o " + full + " " + kDump), 3, "No space left on device"));
    EXPECT_TRUE(fs::is_symlink(full));
}

// The machine that runs the tests may have any bus, or none.
TEST(RecordCommand, RecordsTheLiveBus) {
    const FileFolder folder;
    const testsupport::EnvironmentValue noDump("TAV_PCI_DUMP", std::nullopt);
    const bool hasBus = fs::exists("/sys/bus/pci/devices");
    const std::string file = folder.file("bus.txt");
    EXPECT_TRUE(says(runTavctl("record -o " + file), hasBus ? 0 : 3, hasBus ? "" : "/sys"));
    if (hasBus) {
        EXPECT_EQ(outputOf("record --scrub"), outputOf("record --scrub --dump " + file));
    }
}

} // namespace
