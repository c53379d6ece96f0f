// What the tool says, and what it reads, otherwise than on other systems.
#include "tests/support/program.h"
#include "tests/support/temporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testsupport::ProgramResult;
using testsupport::runProgram;

TEST(WindowsHelp, SpeaksOfNothingThatWindowsDoesNotHave) {
    const ProgramResult help = runProgram(TAVCTL_FILE, {"--help"});
    EXPECT_EQ(help.exitStatus, 0);
    EXPECT_THAT(help.output, Not(HasSubstr("man tavctl")));
    EXPECT_THAT(help.output, HasSubstr("\"tavctl COMMAND --help\" says more."));
}

class WindowsPciNames : public testing::Test {
protected:
    testsupport::TemporaryFolder folder_;
};

// The program and its libraries elsewhere, with the list of names beside them.
TEST_F(WindowsPciNames, AreReadFromBesideTheTool) {
    for (const char* file : {TAVCTL_FILE, ZOTAVPCI_FILE, ZOPCIBRD_FILE})
        fs::copy_file(file, folder_.path() / fs::path(file).filename());
    static_cast<void>(folder_.file("pci.ids", "104c  The Maker of Bridges\n"));
    const ProgramResult tree =
        runProgram(folder_.path() / fs::path(TAVCTL_FILE).filename(),
                   {"tree", "--dump", TAV_SOURCE_DIR "/samples/switchboxes.dump", "--descriptions",
                    TAV_SOURCE_DIR "/descriptions"});
    EXPECT_THAT(tree.output, HasSubstr("The Maker of Bridges"));
}

// A folder that anybody may make below the root of a drive.
TEST_F(WindowsPciNames, AreNotReadFromTheRootOfADrive) {
    fs::create_directories("C:/usr/share/misc");
    (void)std::ofstream("C:/usr/share/misc/pci.ids").write("104c  Planted\n", 14);
    const fs::path before = fs::current_path();
    fs::current_path("C:/");
    const ProgramResult tree =
        runProgram(TAVCTL_FILE, {"tree", "--dump", TAV_SOURCE_DIR "/samples/switchboxes.dump",
                                 "--descriptions", TAV_SOURCE_DIR "/descriptions"});
    fs::current_path(before);
    fs::remove_all("C:/usr");
    EXPECT_EQ(tree.exitStatus, 0) << tree.error;
    EXPECT_THAT(tree.output, Not(HasSubstr("Planted")));
}

} // namespace
