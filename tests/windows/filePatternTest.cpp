// Patterns on the command line, which no shell of Windows puts files in the place of.
#include "platform/filePattern.h"

#include "platform/utf8Path.h"
#include "tests/support/program.h"
#include "tests/support/temporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using platform::filesOfPattern;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testsupport::ProgramResult;
using testsupport::runProgram;

class WindowsFilePattern : public testing::Test {
protected:
    [[nodiscard]] std::string in(const std::string& name) const {
        return platform::utf8Text((folder_.path() / "").make_preferred()) + name;
    }
    void copySample(const std::string& name, const std::string& model) const {
        fs::copy_file(fs::path(TAV_SOURCE_DIR) / "descriptions" / "PCI Hardware Descriptions" /
                          (model + ".ini"),
                      platform::utf8Path(in(name)));
    }
    void write(const std::string& name) const { (void)folder_.file(name, ""); }

    testsupport::TemporaryFolder folder_;
};

TEST_F(WindowsFilePattern, StandsForTheFilesWhoseNamesMatch) {
    for (const char* name :
         {"b.ini", "A.INI", "c.txt", "d.ini~", "\xC3\x84.ini", ".e.ini", "plain"})
        write(name);
    EXPECT_THAT(filesOfPattern(in("*.ini")),
                ElementsAre(in("A.INI"), in("b.ini"), in("\xC3\x84.ini")))
        << "and not by its short name";
    EXPECT_THAT(filesOfPattern(in("?.ini")),
                ElementsAre(in("A.INI"), in("b.ini"), in("\xC3\x84.ini")));
    EXPECT_THAT(filesOfPattern(in("\xC3\xA4*")), ElementsAre(in("\xC3\x84.ini")));
    EXPECT_THAT(filesOfPattern(in("*.*")), testing::SizeIs(6));
    EXPECT_THAT(filesOfPattern(in(".*")), ElementsAre(in(".e.ini")));
    EXPECT_THAT(filesOfPattern(in("*.dump")), IsEmpty());
    EXPECT_THAT(filesOfPattern(in("none\\*.ini")), IsEmpty());
}

TEST_F(WindowsFilePattern, IsLookedForFromTheCurrentFolderToo) {
    write("sub/a.ini");
    const fs::path before = fs::current_path();
    fs::current_path(folder_.path());
    EXPECT_THAT(filesOfPattern("sub/*.ini"), ElementsAre("sub/a.ini"));
    EXPECT_THAT(filesOfPattern("s*"), ElementsAre("sub"));
    fs::current_path(before);
}

TEST_F(WindowsFilePattern, WordWithoutOneIsItself) {
    for (const std::string word :
         {"", "-", "box.ini", "no\\such.ini", "\\\\?\\C:\\box.ini", "\xFF*"})
        EXPECT_THAT(filesOfPattern(word), ElementsAre(word));
}

ProgramResult lint(const std::vector<std::string>& files) {
    std::vector<std::string> words = {"lint"};
    words.insert(words.end(), files.begin(), files.end());
    return runProgram(TAVCTL_FILE, words);
}

TEST_F(WindowsFilePattern, IsTakenByTheToolWhereItTakesFiles) {
    copySample("a.ini", "tav-c1-adapter-card");
    copySample("b.ini", "tav-b3-switch-box");
    const ProgramResult two = lint({in("*.ini")});
    EXPECT_EQ(two.exitStatus, 0) << two.error;
    EXPECT_EQ(two.output, "2 files, no problems\n");
    EXPECT_EQ(lint({in("a.*"), in("b.ini")}).output, "2 files, no problems\n");

    const ProgramResult none = lint({in("*.dump")});
    EXPECT_EQ(none.exitStatus, 2);
    EXPECT_THAT(none.error, HasSubstr("find files (" + in("*.dump") + "): no file matches"));
}

TEST_F(WindowsFilePattern, StandsForTheOnlyFileWhereOneIsWanted) {
    const std::string descriptions = TAV_SOURCE_DIR "/descriptions";
    fs::copy_file(fs::path(TAV_SOURCE_DIR) / "samples" / "switchboxes.dump",
                  folder_.path() / "one.dump");
    const std::vector<std::string> words = {"list",           "--dump",     in("*.dump"),
                                            "--descriptions", descriptions, "--json"};
    const ProgramResult one = runProgram(TAVCTL_FILE, words);
    EXPECT_EQ(one.exitStatus, 0) << one.error;
    EXPECT_THAT(one.output, HasSubstr("TAV-B3 Switch Box"));
    write("two.dump");
    const ProgramResult two = runProgram(TAVCTL_FILE, words);
    EXPECT_EQ(two.exitStatus, 2);
    EXPECT_THAT(two.error, HasSubstr("2 files match this pattern"));
}

TEST_F(WindowsFilePattern, IsNoneWhereAFileIsToBeWritten) {
    write("old.bash");
    const ProgramResult result =
        runProgram(TAVCTL_FILE, {"completion", "bash", "--force", "-o", in("*.bash")});
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_THAT(result.error, HasSubstr("*.bash"));
    EXPECT_EQ(fs::file_size(folder_.path() / "old.bash"), 0U);
}

} // namespace
