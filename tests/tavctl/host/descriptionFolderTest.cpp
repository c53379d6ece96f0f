// What lies in the folder of descriptions without being one, as a folder brings it from another
// system.
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"
#include "tests/tavctl/runTavctl.h"
#include "tests/tavctl/sample.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;

class OddFiles : public testing::Test {
protected:
    OddFiles() { fs::copy(kSampleDescriptions, folder_.path() / "d", fs::copy_options::recursive); }

    [[nodiscard]] fs::path in(const char* name) const {
        return folder_.path() / "d" / "PCI Hardware Descriptions" / name;
    }
    [[nodiscard]] std::string option() const {
        return " --descriptions " + (folder_.path() / "d").string();
    }
    void copyBoxTo(const char* name) const {
        fs::copy_file(in("tav-c1-adapter-card.ini"), in(name));
    }
    void writeExplorersFile() const {
        std::ofstream(in("desktop.ini")) << "[.ShellClassInfo]\nIconFile=folder.ico\n";
    }

    testsupport::TemporaryFolder folder_;
};

TEST_F(OddFiles, LintTellsOfNamesThatAnotherSystemLoads) {
    copyBoxTo("box.ini~");
    copyBoxTo("box.ini.bak");
    copyBoxTo(".box.ini~");
    const auto result = runTavctl("lint" + option());
    EXPECT_TRUE(says(result, 0, "3 files, 0 errors, 2 warnings\n"));
    EXPECT_TRUE(says(result, 0, in("box.ini~").string() + ": warning: short-name\n"));
    EXPECT_TRUE(says(result, 0, in(".box.ini~").string() + ": warning: short-name\n"));
    EXPECT_TRUE(says(runTavctl("lint --json" + option()), 0, "\"rule\":\"short-name\""));
}

TEST_F(OddFiles, LintOfNamedFilesLooksAtNoOtherNames) {
    copyBoxTo("box.ini~");
    EXPECT_TRUE(says(runTavctl("lint '" + in("tav-c1-adapter-card.ini").string() + "'"), 0,
                     "1 file, no problems"));
    EXPECT_TRUE(
        says(runTavctl("lint '" + in("box.ini~").string() + "'"), 0, "1 file, no problems"));
}

TEST_F(OddFiles, ListLoadsNoneOfThem) {
    copyBoxTo("box.ini~");
    const auto expected = runTavctl("list " + kDump + kDescriptions);
    EXPECT_EQ(runTavctl("list " + kDump + option()).output, expected.output);
}

TEST_F(OddFiles, ExplorersFileIsOneErrorThatSaysWhatToDo) {
    writeExplorersFile();
    const auto result = runTavctl("lint" + option());
    EXPECT_TRUE(says(result, 1, in("desktop.ini").string() + ": error: desktop-ini\n"));
    EXPECT_TRUE(says(result, 1, "del /a desktop.ini"));
    EXPECT_TRUE(says(result, 1, "4 files, 1 error, 0 warnings\n"));
    EXPECT_TRUE(says(result, 1, "The plug-in cannot load these files"));
}

TEST_F(OddFiles, EveryFailureByExplorersFileNamesIt) {
    writeExplorersFile();
    for (const char* command : {"list ", "tree ", "draw --format dot "}) {
        const auto result = runTavctl(command + kDump + option());
        EXPECT_TRUE(says(result, 3, "load description (" + in("desktop.ini").string() + ")"));
        EXPECT_TRUE(says(result, 3, "Windows' Explorer"));
        EXPECT_TRUE(says(result, 3, "del /a desktop.ini"));
    }
}

// In UTF-16, as it mostly is.
TEST_F(OddFiles, ExplorersFileIsKnownInAnyEncoding) {
    std::ofstream(in("desktop.ini"), std::ios::binary) << std::string("\xFF\xFE[\0.\0", 6);
    EXPECT_TRUE(says(runTavctl("lint" + option()), 1, "desktop.ini: error: desktop-ini\n"));
}

TEST_F(OddFiles, DescriptionOfThatNameIsADescription) {
    copyBoxTo("desktop.ini");
    EXPECT_TRUE(says(runTavctl("lint" + option()), 0, "duplicate-model"));
    std::ofstream(in("desktop.ini")) << "[UpstreamTAV]\nModel = My Box\n";
    EXPECT_TRUE(says(runTavctl("lint" + option()), 1, "missing-key"));
}

TEST_F(OddFiles, FolderWhosePathIsTooLongIsNotTakenForAMissingOne) {
    const std::string longName(300, 'x');
    for (const char* command : {"list ", "lint "}) {
        const auto result =
            runTavctl(command + kDump + "--descriptions " + (folder_.path() / longName).string());
        EXPECT_TRUE(says(result, 3, longName));
        EXPECT_TRUE(says(result, 3, "File name too long"));
    }
    const auto state = runTavctl("list " + kDump + kDescriptions + "--state " +
                                 (folder_.path() / longName).string());
    EXPECT_TRUE(says(state, 3, "File name too long"));
}

TEST_F(OddFiles, ConfiguredFolderWhosePathIsTooLongIsExplained) {
    const std::string path = (folder_.path() / std::string(300, 'x')).string() + "/";
    const std::string file =
        folder_
            .file("tav.conf", "[SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion]\nPath=" + path +
                                  "\nConfigPath=" + folder_.path().string() + "/\n")
            .string();
    const auto result = testsupport::runCommand("TAV_MANAGER_CONF=" + file +
                                                " " TAVCTL_FILE " list " + kDump + "2>&1");
    EXPECT_TRUE(says(result, 3, "list descriptions (" + path));
    EXPECT_TRUE(says(result, 3, "File name too long"));
}

} // namespace
