// Every command where a shell leaves a program little stack: `ulimit -s 64`. Threads get as little.
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"
#include "tests/tavctl/runTavctl.h"

#include <filesystem>
#include <map>
#include <string>

namespace {

namespace fs = std::filesystem;

// What a command leaves behind: its exit status, its output, and the files of its folder.
struct Outcome {
    int exitStatus = -1;
    std::string output;
    std::map<std::string, std::string> files;
};

// Runs a command by a shell's words before it, in a folder with names of the sample machine. Words
// in capitals stand for options with their file or folder.
Outcome outcomeOf(const fs::path& folder, const std::string& before, std::string words) {
    fs::remove_all(folder);
    fs::create_directories(folder / "state");
    const std::string state = "--state " + (folder / "state").string() + " ";
    const std::string bus = tavctltest::kDump + tavctltest::kDescriptions;
    EXPECT_EQ(tavctltest::runTavctl("list " + bus + state).exitStatus, 0);
    fs::copy_file(folder / "state" / "zotavpci.ini", folder / "backup.ini");
    const std::pair<const char*, std::string> options[] = {
        {"BUS", bus},
        {"DUMP", tavctltest::kDump},
        {"DESCRIPTIONS", tavctltest::kDescriptions},
        {"STATE", state},
        {"FOLDER", folder.string()}};
    for (const auto& [name, option] : options) {
        for (auto at = words.find(name); at != std::string::npos; at = words.find(name))
            words.replace(at, std::string(name).size(), option);
    }
    const auto result = testsupport::runCommand("cd " + folder.string() + " && " + before +
                                                TAVCTL_FILE " " + words);
    Outcome outcome{result.exitStatus, result.output, {}};
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file())
            outcome.files[entry.path().string()] = testsupport::fileText(entry.path());
    }
    return outcome;
}

class SmallStack : public testing::TestWithParam<const char*> {};

TEST_P(SmallStack, MakesNoDifference) {
    const testsupport::TemporaryFolder folder;
    const Outcome plain = outcomeOf(folder.path() / "run", "", GetParam());
    EXPECT_GE(plain.exitStatus, 0);
    EXPECT_LE(plain.exitStatus, 1) << plain.output;
    const Outcome small = outcomeOf(folder.path() / "run", "ulimit -s 64 && ", GetParam());
    EXPECT_EQ(small.exitStatus, plain.exitStatus);
    EXPECT_EQ(small.output, plain.output);
    EXPECT_EQ(small.files, plain.files);
}

INSTANTIATE_TEST_SUITE_P(
    Of, SmallStack,
    testing::Values(
        "--help", "--version", "list BUSSTATE", "list --json BUSSTATE", "list -v BUSSTATE",
        "list "
        "--dump " TAV_SOURCE_DIR "/samples/full-bus.dump DESCRIPTIONSSTATE",
        "tree BUSSTATE", "tree --json BUSSTATE",
        "tree --dump " TAV_SOURCE_DIR "/samples/full-bus.dump DESCRIPTIONSSTATE",
        "draw --format dot BUSSTATE", "draw --format dot --all -o bus.dot BUSSTATE",
        "draw --format dot --front -o bus.dot BUSSTATE", "names list BUSSTATE",
        "names list --json BUSSTATE", "names check BUSSTATE", "names preview BUSSTATE",
        "names backup copy.ini STATE", "names restore FOLDER/backup.ini STATE",
        "names rename TAV1 TAV7 STATE", "names forget TAVCard1 --force STATE",
        "names forget TAV1 BUSSTATE", "lint DESCRIPTIONS", "lint --json DESCRIPTIONS",
        "lint DESCRIPTIONS--against " TAV_SOURCE_DIR "/samples/switchboxes.dump", "explain BUS",
        "explain --json BUS", "describe 01:00.0 DUMP", "describe 01:00.0 DUMP -o draft.ini",
        "where 06:00.0 BUSSTATE", "where TAV1:2 BUSSTATE", "where TAV1 --json BUSSTATE",
        "where --help", "record DUMP", "record --scrub DUMP -o other.dump",
        "mock 'TAV-B3 Switch Box' 'TAV-C1 Adapter Card' --in TAV1:2 DESCRIPTIONS",
        "completion bash", "completion zsh", "completion fish", "completion powershell",
        "metrics BUSSTATE | grep -v '^tav_last_look_[td]'", "metrics --help", "list --help",
        "tree --help", "draw --help", "names --help", "lint --help", "explain --help",
        "describe --help", "record --help", "mock --help", "completion --help"),
    [](const testing::TestParamInfo<const char*>& tested) { return std::to_string(tested.index); });

// The line that says how long it takes already has a thread of its own.
TEST(SmallStack, HoldsTheThreadThatTellsOfProgress) {
    const testsupport::TemporaryFolder folder;
    const std::string arguments = "list " + tavctltest::kDump + tavctltest::kDescriptions +
                                  "--state " + folder.path().string();
    const auto result = testsupport::runCommand("ulimit -s 64 && script -qec '" TAVCTL_FILE " " +
                                                arguments + "' /dev/null");
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_NE(result.output.find("TAVCard1"), std::string::npos) << result.output;
}

} // namespace
