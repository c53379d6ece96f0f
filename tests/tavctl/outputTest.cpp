// What could not be written is said, with the exit status for it, by every command.
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"
#include "tests/tavctl/everyCommand.h"
#include "tests/tavctl/runTavctl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>

namespace {

using namespace tavctltest;

std::vector<std::string> everyForm() {
    std::vector<std::string> forms = looksAtNothing();
    for (const std::string& form : looksAtMachine())
        forms.push_back(form + " " + kDump + kDescriptions);
    return forms;
}

// names list and preview need names to print.
class Output : public testing::Test {
protected:
    Output() { runTavctl("list " + kDump + kDescriptions + option()); }
    [[nodiscard]] std::string option() const { return "--state " + folder_.path().string() + " "; }

    [[nodiscard]] std::string withState(const std::string& form) const {
        return form.find(kDump) == std::string::npos ? form : form + option();
    }

private:
    testsupport::TemporaryFolder folder_;
};

TEST_F(Output, ThatADiskHasNoRoomForIsExitStatusThree) {
    for (const std::string& form : everyForm()) {
        const auto result =
            testsupport::runCommand(TAVCTL_FILE " " + withState(form) + " 2>&1 >/dev/full");
        EXPECT_TRUE(says(result, 3, "write result")) << form;
        EXPECT_TRUE(says(result, 3, "standard output")) << form;
        EXPECT_TRUE(says(result, 3, "No space left on device")) << form;
    }
}

TEST_F(Output, ThatIsClosedIsExitStatusThree) {
    for (const std::string& form : everyForm()) {
        const auto result =
            testsupport::runCommand(TAVCTL_FILE " " + withState(form) + " 2>&1 >&-");
        EXPECT_TRUE(says(result, 3, "standard output")) << form;
        EXPECT_TRUE(says(result, 3, "Bad file descriptor")) << form;
    }
}

// Else the next file that is opened would be standard output, and take the result.
TEST_F(Output, WithEveryStreamClosedReachesNoOtherFile) {
    const testsupport::TemporaryFolder folder;
    const std::string state = folder.path().string();
    const auto result = testsupport::runCommand(TAVCTL_FILE " list " + kDump + kDescriptions +
                                                "--state " + state + " <&- >&- 2>&-");
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_TRUE(says(runTavctl("names check --state " + state + " " + kDump + kDescriptions), 0,
                     "no problem with 4 names"));
}

TEST_F(Output, GoesToADeviceAsItIs) {
    for (const char* command : {"draw --format dot", "record", "describe 01:00.0"}) {
        const std::string form = std::string(command) + " " + kDump + kDescriptions;
        EXPECT_TRUE(says(runTavctl(form + "-o /dev/full"), 3,
                         "write result (/dev/full): No space left on device"));
        EXPECT_EQ(runTavctl(form + "-o /dev/null").exitStatus, 0) << command;
        EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    }
}

// As a dash is standard input.
TEST_F(Output, OfADashIsStandardOutput) {
    const testsupport::TemporaryFolder folder;
    for (const std::string& form :
         {"draw --format dot " + kDump + kDescriptions, "record " + kDump,
          "describe 01:00.0 " + kDump + kDescriptions, "mock 'TAV-B3 Switch Box' " + kDescriptions,
          std::string("completion bash")}) {
        const std::string command = "cd " + folder.path().string() + " && " TAVCTL_FILE " " + form;
        const auto dashed = testsupport::runCommand(command + " -o - 2>&1");
        EXPECT_EQ(dashed.exitStatus, 0) << form;
        EXPECT_NE(dashed.output, "") << form;
        EXPECT_EQ(dashed.output, testsupport::runCommand(command + " 2>&1").output) << form;
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST_F(Output, OfAFailedCommandLeavesTheFileOfBefore) {
    const testsupport::TemporaryFolder folder;
    const std::string file = folder.file("mine", "edited by hand").string();
    for (const char* command : {"draw", "record", "describe 01:00.0", "completion bash"}) {
        const std::string form =
            std::string(command) + (command[0] == 'c' ? " " : " " + kDump + kDescriptions);
        EXPECT_TRUE(says(runTavctl(form + "-o " + file), 3,
                         "write result (" + file + "): the file exists; --force replaces it"))
            << command;
        EXPECT_EQ(testsupport::fileText(file), "edited by hand") << command;
        const auto limited = testsupport::runCommand("ulimit -f 1; " TAVCTL_FILE " " + form +
                                                     "--force -o " + file + " 2>&1");
        if (limited.exitStatus != 0) { // what is shorter than the limit is written
            EXPECT_EQ(testsupport::fileText(file), "edited by hand") << command;
        }
        EXPECT_EQ(folder.file("mine", "edited by hand"), file);
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

// The longest line of what a terminal of that many columns gets; without columns, a pipe.
std::size_t longestLine(const std::string& form, int columns) {
    const std::string command = TAVCTL_FILE " " + form + kDump + kDescriptions;
    const std::string output = columns == 0
                                   ? outputOf(form + kDump + kDescriptions)
                                   : testsupport::runCommand("NO_COLOR=1 script -qec 'stty cols " +
                                                             std::to_string(columns) + "; " +
                                                             command + " 2>/dev/null' /dev/null")
                                         .output;
    std::size_t longest = 0;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);)
        longest = std::max(longest, line.size() - (line.ends_with('\r') ? 1 : 0));
    return longest;
}

TEST(OutputOnATerminal, IsAsWideAsItAndUnboundedInAPipe) {
    const testsupport::TemporaryFolder folder;
    const std::string ids =
        folder.file("pci.ids", "8086  " + std::string(200, 'm') + "\n").string();
    const std::string tree = "tree --pci-ids " + ids + " ";
    EXPECT_EQ(longestLine(tree, 80), 80U);
    EXPECT_EQ(longestLine(tree, 200), 200U);
    EXPECT_GT(longestLine(tree, 0), 200U);
    EXPECT_EQ(longestLine("list ", 60), 60U);
    EXPECT_GT(longestLine("list ", 0), 60U);
}

} // namespace
