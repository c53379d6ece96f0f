// Running other programs: where they are looked for.
#include "platform/childProgram.h"

#include "tests/support/environmentValue.h"
#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using platform::runProgram;
using testsupport::EnvironmentValue;

void plantProgram(const fs::path& folder) {
    fs::create_directories(folder);
    fs::copy_file(TAV_OTHER_PROCESS, folder / "planted.exe");
}

TEST(WindowsChildProgram, IsNeverTakenFromTheCurrentFolderNorFromThere) {
    const testsupport::TemporaryFolder folder;
    plantProgram(folder.path());
    plantProgram(folder.path() / "bin");
    plantProgram(folder.path() / "named");
    const std::string named = fs::path(folder.path() / "named").make_preferred().string();
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    const std::vector<std::string> words = {"planted", "arguments", "here"};
    for (const std::string folders : {".", "bin", ".\\bin", ";", "C:", "\\bin"}) {
        const EnvironmentValue path("PATH", folders);
        EXPECT_EQ(runProgram(words, "").failure, DWORD{ERROR_FILE_NOT_FOUND}) << folders;
        EXPECT_EQ(runProgram({".\\planted", "arguments"}, "").failure, DWORD{ERROR_FILE_NOT_FOUND});
        const EnvironmentValue longer("PATH", folders + ";" + named);
        EXPECT_EQ(runProgram(words, "").output, "[here]\n") << folders;
    }
    fs::current_path(before);
}

} // namespace
