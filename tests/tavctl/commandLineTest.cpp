// tavctl as a person runs it: usage, exit statuses, sentences.
#include "tests/support/command.h"
#include "tests/support/environmentValue.h"
#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using testsupport::CommandResult;
using testsupport::TemporaryFolder;

const std::string kDump = "--dump " TAV_SOURCE_DIR "/samples/switchboxes.dump ";
const std::string kDescriptions = "--descriptions " TAV_SOURCE_DIR "/descriptions ";

CommandResult tavctl(const std::string& arguments) {
    return testsupport::runCommand(TAVCTL_FILE " " + arguments + " 2>&1");
}

std::string state(const TemporaryFolder& folder) {
    return "--state " + folder.path().string() + " ";
}

testing::AssertionResult says(const CommandResult& result, int exitStatus,
                              const std::string& text) {
    if (result.exitStatus == exitStatus && result.output.find(text) != std::string::npos)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "exit status " << result.exitStatus << ", output:\n"
                                       << result.output;
}

TEST(CommandLine, ListsTheSampleMachine) {
    const TemporaryFolder folder;
    const auto result = tavctl("list " + kDump + kDescriptions + state(folder));
    EXPECT_TRUE(says(result, 0, "TAVCard1  TAV-C1 Adapter Card     04:00.0  PCI"));
}

TEST(CommandLine, LinesFitEightyColumns) {
    const TemporaryFolder folder;
    const auto result = tavctl("list " + kDump + kDescriptions + state(folder));
    std::size_t start = 0;
    for (auto end = result.output.find('\n'); end != std::string::npos;
         start = end + 1, end = result.output.find('\n', start))
        EXPECT_LE(end - start, 80U) << result.output.substr(start, end - start);
    EXPECT_GT(start, 0U);
}

TEST(CommandLine, FolderNamesMayEndWithASeparator) {
    const TemporaryFolder folder;
    const auto result =
        tavctl("list " + kDump + "--descriptions " TAV_SOURCE_DIR "/descriptions/ --state " +
               folder.path().string() + "/");
    EXPECT_TRUE(says(result, 0, "TAV3"));
}

TEST(CommandLine, WrongUsageExitsWithTwo) {
    EXPECT_TRUE(says(tavctl(""), 2, "subcommand"));
    EXPECT_TRUE(says(tavctl("frobnicate"), 2, "subcommand is required"));
    EXPECT_TRUE(says(tavctl("list --no-such-option"), 2, "--no-such-option"));
}

TEST(CommandLine, HelpAndVersionExitWithZero) {
    EXPECT_TRUE(says(tavctl("--help"), 0, "Exit status"));
    EXPECT_TRUE(says(tavctl("list --help"), 0, "--descriptions"));
    EXPECT_TRUE(says(tavctl("--version"), 0, "tavctl 15.0.0"));
}

TEST(CommandLine, MissingPluginIsNamed) {
    const TemporaryFolder folder;
    const auto result =
        tavctl("list --plugin /nonexistent/zotavpci.so " + kDump + kDescriptions + state(folder));
    EXPECT_TRUE(says(result, 3, "tavctl: load plug-in (/nonexistent/zotavpci.so): "));
}

TEST(CommandLine, LibraryThatIsNoPluginIsNamedWithTheMissingFunction) {
    const TemporaryFolder folder;
    const auto result =
        tavctl("list --plugin " ZOPCIBRD_FILE " " + kDump + kDescriptions + state(folder));
    EXPECT_TRUE(says(result, 3, "it does not export tavPlugin_initialize"));
}

TEST(CommandLine, MissingBridgeLibraryIsNamedWithTheErrorRecord) {
    const TemporaryFolder folder;
    const TemporaryFolder programs;
    fs::copy_file(TAVCTL_FILE, programs.path() / "tavctl");
    fs::copy_file(ZOTAVPCI_FILE, programs.path() / "zotavpci.so");
    const auto result = testsupport::runCommand((programs.path() / "tavctl").string() + " list " +
                                                kDump + kDescriptions + state(folder) + "2>&1");
    EXPECT_TRUE(says(result, 3, "tavctl: load bridge library (zopcibrd.so): "));
    EXPECT_TRUE(says(result, 3, "-52005 (0xFFFF34DB)"));
    EXPECT_TRUE(says(result, 3, "zodynlib_debug.path = zopcibrd.so"));
    EXPECT_TRUE(says(result, 3, "internal_error.api = posix"));
    EXPECT_FALSE(fs::exists(folder.path() / "zotavpci.ini"));
}

TEST(CommandLine, MissingFoldersAreNamed) {
    const TemporaryFolder folder;
    EXPECT_TRUE(says(tavctl("list " + kDump + "--descriptions /nonexistent " + state(folder)), 3,
                     "use --descriptions (/nonexistent): there is no such folder"));
    EXPECT_TRUE(says(tavctl("list " + kDump + kDescriptions + "--state /nonexistent"), 3,
                     "use --state (/nonexistent): there is no such folder"));
}

TEST(CommandLine, MissingDumpIsNamed) {
    const TemporaryFolder folder;
    const auto result = tavctl("list --dump /nonexistent.dump " + kDescriptions + state(folder));
    EXPECT_TRUE(says(result, 3, "/nonexistent.dump"));
    EXPECT_TRUE(says(result, 3, "No such file or directory"));
    EXPECT_TRUE(says(result, 3, "-313004 (0xFFFB3954)"));
}

TEST(CommandLine, MissingConfigurationIsNamed) {
    const testsupport::EnvironmentValue configuration("TAV_MANAGER_CONF", "/nonexistent.conf");
    const auto result = tavctl("list " + kDump);
    EXPECT_TRUE(says(result, 3, "read configuration value \"ConfigPath\" (/nonexistent.conf"));
    EXPECT_TRUE(says(result, 3, "-52003 (0xFFFF34DD)"));
}

TEST(CommandLine, FailuresAreJsonOnDemand) {
    const TemporaryFolder folder;
    const auto result =
        tavctl("list --json --dump /nonexistent.dump " + kDescriptions + state(folder));
    EXPECT_TRUE(says(result, 3, R"({"error":{"operation":"open bridge session",)"));
}

TEST(CommandLine, EmptyListIsSaidOnStandardErrorOnly) {
    const TemporaryFolder folder;
    const std::string arguments = "list --dump " + folder.file("empty.dump", "").string() + " " +
                                  kDescriptions + state(folder);
    EXPECT_TRUE(says(tavctl(arguments), 0, "no described device is present on this bus"));
    EXPECT_EQ(testsupport::runCommand(TAVCTL_FILE " " + arguments + " 2>/dev/null").output, "");
}

// The machine that runs the tests may have any bus, or none; either way it is the live one that is
// asked.
TEST(CommandLine, ReadsTheLiveBusWithoutADump) {
    const TemporaryFolder folder;
    const testsupport::EnvironmentValue noDump("TAV_PCI_DUMP", std::nullopt);
    const auto result = tavctl("list " + kDescriptions + state(folder));
    const bool hasBus = fs::exists("/sys/bus/pci/devices");
    EXPECT_TRUE(says(result, hasBus ? 0 : 3, hasBus ? "" : "/sys"));
}

} // namespace
