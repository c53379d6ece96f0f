// What lies in the folder of descriptions without being one, and a folder that is too far from the
// root.
#include "platform/directorySearch.h"
#include "platform/utf8Path.h"
#include "tests/support/program.h"
#include "tests/support/temporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testsupport::ProgramResult;

class WindowsDescriptionFolder : public testing::Test {
protected:
    WindowsDescriptionFolder() {
        fs::copy(fs::path(TAV_SOURCE_DIR) / "descriptions", folder_.path() / "d",
                 fs::copy_options::recursive);
    }

    [[nodiscard]] fs::path inner() const {
        return folder_.path() / "d" / "PCI Hardware Descriptions";
    }
    void copyBoxTo(const char* name) const {
        fs::copy_file(inner() / "tav-c1-adapter-card.ini", inner() / name);
    }
    [[nodiscard]] ProgramResult run(std::vector<std::string> words) const {
        words.insert(words.end(), {"--dump", TAV_SOURCE_DIR "/samples/switchboxes.dump",
                                   "--descriptions", (folder_.path() / "d").string()});
        return testsupport::runProgram(TAVCTL_FILE, words);
    }

    testsupport::TemporaryFolder folder_;
};

TEST_F(WindowsDescriptionFolder, FileThatIsLoadedByItsShortNameIsToldOf) {
    for (const char* name : {"box.ini~", "box.ini_old"}) {
        copyBoxTo(name);
        for (const char* command : {"list", "tree"}) {
            const ProgramResult result = run({command});
            EXPECT_EQ(result.exitStatus, 0) << result.error;
            EXPECT_THAT(result.error, HasSubstr("tavctl: loaded by a short name"));
            EXPECT_THAT(result.error, HasSubstr(name));
        }
        const ProgramResult lint = run({"lint"});
        EXPECT_EQ(lint.exitStatus, 1);
        EXPECT_THAT(lint.output, HasSubstr(std::string(name) + ": error: loaded-by-short-name\n"));
        EXPECT_THAT(lint.output, HasSubstr("duplicate-model")) << "it is read as any description";
        EXPECT_THAT(lint.output, Not(HasSubstr(": short-name")));
        fs::remove(inner() / name);
    }
    EXPECT_THAT(run({"list"}).error, Not(HasSubstr("short name")));
}

TEST_F(WindowsDescriptionFolder, FileWithAnotherExtensionIsNot) {
    copyBoxTo("box.ini.bak");
    EXPECT_THAT(run({"list"}).error, Not(HasSubstr("short name")));
    EXPECT_EQ(run({"lint"}).output, "3 files, no problems\n");
}

TEST_F(WindowsDescriptionFolder, HiddenFileOfExplorersIsNamedAsWhatStopsEverything) {
    std::ofstream(inner() / "desktop.ini") << "[.ShellClassInfo]\r\nIconFile=folder.ico\r\n";
    SetFileAttributesW((inner() / "desktop.ini").c_str(),
                       FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
    const ProgramResult list = run({"list"});
    EXPECT_EQ(list.exitStatus, 3);
    EXPECT_THAT(list.error, HasSubstr("desktop.ini): Windows' Explorer"));
    EXPECT_THAT(list.error, HasSubstr("del /a desktop.ini"));
    const ProgramResult lint = run({"lint"});
    EXPECT_EQ(lint.exitStatus, 1);
    EXPECT_THAT(lint.output, HasSubstr("desktop.ini: error: desktop-ini\n"));
    SetFileAttributesW((inner() / "desktop.ini").c_str(), FILE_ATTRIBUTE_NORMAL);
}

} // namespace
