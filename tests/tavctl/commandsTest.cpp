// Every command that prints facts, on the sample machine: the same bytes on every system. The files
// of commands/ hold what each prints; a change of them is a change that people see.
#include "platform/utf8Path.h"
#include "tests/support/fileText.h"
#include "tests/support/program.h"
#include "tests/support/temporaryFolder.h"
#include "tests/tavctl/sample.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using tavctltest::kProject;

struct Command {
    const char* name;  // of the file that holds the output
    const char* words; // words in capitals stand for an option with its file or folder
};

// A test's name in failures.
void PrintTo(const Command& command, std::ostream* stream) {
    *stream << command.words;
}

class Commands : public testing::TestWithParam<Command> {
protected:
    Commands() {
        // Names are there already, as on a machine in use.
        run("list DUMP DESCRIPTIONS STATE");
    }

    testsupport::ProgramResult run(const std::string& words) const {
        std::vector<std::string> arguments;
        std::istringstream stream(words);
        for (std::string word; stream >> word;) {
            const auto add = [&](const char* option, const fs::path& path) {
                arguments.insert(arguments.end(), {option, platform::utf8Text(path)});
            };
            if (word == "DUMP")
                add("--dump", kProject / "samples" / "switchboxes.dump");
            else if (word == "DESCRIPTIONS")
                add("--descriptions", kProject / "descriptions");
            else if (word == "IDS")
                add("--pci-ids", kProject / "tests" / "tavctl" / "commands" / "pci.ids");
            else if (word == "STATE")
                add("--state", state_.path());
            else
                arguments.push_back(word);
        }
        return testsupport::runProgram(TAVCTL_FILE, arguments);
    }

    // Folders are separated as on Linux; the project's own is left out, and so is the version.
    static std::string unified(std::string text) {
        std::replace(text.begin(), text.end(), '\\', '/');
        replaceAll(text, kProject.generic_string() + "/", "");
        replaceAll(text, "tavctl " TAV_VERSION, "tavctl @PROJECT_VERSION@");
        return text;
    }

private:
    static void replaceAll(std::string& text, const std::string& old, const std::string& now) {
        for (auto at = text.find(old); at != std::string::npos; at = text.find(old, at))
            text.replace(at, old.size(), now);
    }

    testsupport::TemporaryFolder state_;
};

TEST_P(Commands, PrintsTheSameEverywhere) {
    const testsupport::ProgramResult result = run(GetParam().words);
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    const fs::path file = kProject / "tests" / "tavctl" / "commands" / GetParam().name;
    ASSERT_TRUE(fs::exists(file)) << "there is no file of what this prints:\n"
                                  << unified(result.output);
    const std::string expected = testsupport::fileText(file);
    EXPECT_EQ(unified(result.output), unified(expected));
}

INSTANTIATE_TEST_SUITE_P(
    OfTheSampleMachine, Commands,
    testing::Values(Command{"list.txt", "list DUMP DESCRIPTIONS STATE"},
                    Command{"list-verbose.txt", "list -v DUMP DESCRIPTIONS STATE"},
                    Command{"tree.txt", "tree IDS DUMP DESCRIPTIONS STATE"},
                    Command{"draw.dot", "draw --format dot IDS DUMP DESCRIPTIONS STATE"},
                    Command{"draw-all.dot", "draw --all --format dot IDS DUMP DESCRIPTIONS STATE"},
                    Command{"draw-front.dot",
                            "draw --front --format dot IDS DUMP DESCRIPTIONS STATE"},
                    Command{"explain.txt", "explain DUMP DESCRIPTIONS"},
                    Command{"lint-against.txt", "lint DESCRIPTIONS --against " TAV_SOURCE_DIR
                                                "/samples/switchboxes.dump"},
                    Command{"describe.ini", "describe 01:00.0 DUMP"},
                    Command{"record-scrubbed.dump", "record --scrub DUMP"},
                    Command{"names.txt", "names list DUMP DESCRIPTIONS STATE"},
                    Command{"preview.txt", "names preview DUMP DESCRIPTIONS STATE"}),
    [](const testing::TestParamInfo<Command>& tested) {
        std::string name = tested.param.name;
        std::replace_if(
            name.begin(), name.end(), [](char c) { return c == '.' || c == '-'; }, '_');
        return name;
    });

} // namespace
