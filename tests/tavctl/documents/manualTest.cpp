// The manual has a page for every command, and each page tells every option.
#include "tavctl/commandLine.h"
#include "tavctl/options/commandWords.h"
#include "tests/support/command.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using namespace tavctl;
using testing::HasSubstr;

// As they are installed.
const fs::path kFolder = TAV_BINARY_DIR "/man";

// As it is read on a wide screen, without bold letters.
std::string pageText(const std::string& page) {
    return testsupport::runCommand("mandoc -Tutf8 -Owidth=300 " + (kFolder / page).string() +
                                   " | sed 's/.\\x08//g'")
        .output;
}

void expectOptions(const CommandWords& command, const std::string& text, const std::string& page) {
    for (const OptionWords& option : command.options) {
        for (const std::string& name : option.longNames) {
            EXPECT_THAT(text, HasSubstr("--" + name)) << page;
        }
        for (const std::string& name : option.shortNames) {
            EXPECT_THAT(text, HasSubstr("-" + name)) << page;
        }
    }
    for (const CommandWords& each : command.commands) {
        EXPECT_THAT(text, HasSubstr(each.name)) << page;
        expectOptions(each, text, page);
    }
}

TEST(Manual, HasAPageForEveryCommandThatTellsEveryOption) {
    const CommandWords whole = commandLineWords();
    const std::string mainPage = pageText("tavctl.1");
    for (const CommandWords& command : whole.commands) {
        const std::string page = "tavctl-" + command.name + ".1";
        ASSERT_TRUE(fs::exists(kFolder / page)) << page;
        const std::string text = pageText(page);
        expectOptions(command, text, page);
        for (const char* heading : {"NAME\n", "SYNOPSIS\n", "DESCRIPTION\n", "OPTIONS\n",
                                    "EXIT STATUS\n", "EXAMPLES\n", "SEE ALSO\n"})
            EXPECT_THAT(text, HasSubstr(heading)) << page;
        EXPECT_THAT(text, HasSubstr("tavctl " + command.name)) << page;
        EXPECT_THAT(mainPage, HasSubstr("tavctl-" + command.name + "(1)"));
    }
}

// The line of the help that says what the command writes.
std::string writesLine(const std::string& words) {
    const std::string help = testsupport::runCommand(TAVCTL_FILE " " + words + " --help").output;
    const auto start = help.find("Writes: ");
    return start == std::string::npos ? "no such line in " + help
                                      : help.substr(start, help.find('\n', start) - start);
}

TEST(Manual, SaysOfEveryCommandWhatItWritesAsTheHelpDoes) {
    for (const CommandWords& command : commandLineWords().commands) {
        const std::string text = pageText("tavctl-" + command.name + ".1");
        EXPECT_THAT(text, HasSubstr(writesLine(command.name)));
        for (const CommandWords& action : command.commands)
            EXPECT_THAT(text, HasSubstr(writesLine(command.name + " " + action.name)));
    }
}

TEST(Manual, HasNoPageOfACommandThatIsNotThere) {
    std::size_t pages = 0;
    for (const auto& entry : fs::directory_iterator(kFolder))
        pages += entry.path().extension() == ".1" ? 1 : 0;
    EXPECT_EQ(pages, commandLineWords().commands.size() + 1);
}

TEST(Manual, PagesAreWellFormed) {
    for (const auto& entry : fs::directory_iterator(kFolder))
        EXPECT_EQ(
            testsupport::runCommand("mandoc -T lint -W warning " + entry.path().string() + " 2>&1")
                .output,
            "");
}

} // namespace
