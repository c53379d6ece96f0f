// The console that the tool shares with what runs before and after it.
#include "platform/terminal.h"
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"
#include "tests/windows/importedFunction.h"
#include "tests/windows/pseudoConsole.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

namespace {

using testwindows::ImportedFunction;

const std::string kSampleMachine =
    "--dump " TAV_SOURCE_DIR "/samples/switchboxes.dump --descriptions " TAV_SOURCE_DIR
    "/descriptions";

// The tool in a console of the code page 850 without escape sequences: what its end, or the early
// end that it is put to, leaves.
std::string leftInConsole(const char* how, const std::string& words) {
    const testsupport::TemporaryFolder folder;
    const auto report = folder.path() / "report";
    testwindows::runInConsole(TAV_OTHER_PROCESS, {"console", report.string(), how,
                                                  std::string(TAVCTL_FILE) + " " + words});
    return testsupport::fileTextIfAny(report);
}

constexpr const char* kNothingChanged = "code page 850, mode as before";

TEST(WindowsConsole, IsLeftAsItWasFound) {
    for (const std::string& words :
         {"tree " + kSampleMachine, std::string("--help"), std::string("list --dump none"),
          "list --json " + kSampleMachine, std::string("no-such-command")})
        EXPECT_EQ(leftInConsole("run", words), kNothingChanged) << words;
}

// While it waits for a bus that somebody writes to it.
TEST(WindowsConsole, IsLeftSoByAnEarlyEndToo) {
    EXPECT_EQ(leftInConsole("break", "tree --dump -"), kNothingChanged);
}

// A console of an older system, which takes no escape sequences.
struct OldConsole {
    static BOOL WINAPI mode(HANDLE, LPDWORD result) {
        *result = ENABLE_PROCESSED_OUTPUT | ENABLE_WRAP_AT_EOL_OUTPUT;
        return TRUE;
    }
    static BOOL WINAPI setMode(HANDLE, DWORD) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }

    ImportedFunction mode_{"GetConsoleMode", reinterpret_cast<void*>(&mode)};
    ImportedFunction setMode_{"SetConsoleMode", reinterpret_cast<void*>(&setMode)};
};

TEST(WindowsTerminal, ThatRefusesEscapesGetsNone) {
    const OldConsole console;
    EXPECT_TRUE(platform::isTerminal(stderr));
    EXPECT_FALSE(platform::takesEscapes(stderr));
}

TEST(WindowsTerminal, IsAConsoleAndNoOtherDevice) {
    std::FILE* const null = std::fopen("NUL", "wb");
    ASSERT_NE(null, nullptr);
    EXPECT_FALSE(platform::isTerminal(null));
    EXPECT_FALSE(platform::takesEscapes(null));
    std::fclose(null);
}

} // namespace
