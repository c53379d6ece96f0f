// Configurations that are missing or incomplete. Nothing is given a name then.
#include "tests/plugin/pluginCopy.h"
#include "tests/support/environmentValue.h"

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using testplugin::PluginCopy;
using testplugin::SampleMachine;
using testsupport::EnvironmentValue;
using testsupport::TemporaryFolder;

constexpr auto kValueMissing = static_cast<std::int32_t>(0x80070002U);
constexpr const char* kSection = "[SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion]\n";

// Initialises with the configuration text that is given, on the sample machine's bus.
std::int32_t initializeWith(const std::string& text) {
    const SampleMachine machine;
    const TemporaryFolder folder;
    const EnvironmentValue configuration("TAV_MANAGER_CONF", folder.file("conf", text).string());
    const PluginCopy plugin;
    const std::int32_t status = plugin.initialize();
    EXPECT_EQ(plugin.countOrStatus(), status < 0 ? kTavManErrSoftwareFault : 0);
    return status;
}

TEST(Configuration, MissingFileIsAMissingKey) {
    const SampleMachine machine;
    const EnvironmentValue configuration("TAV_MANAGER_CONF", "/nonexistent/tav.conf");
    const PluginCopy plugin;
    EXPECT_EQ(plugin.initialize(), -52003);
}

TEST(Configuration, MissingSectionIsAMissingKey) {
    EXPECT_EQ(initializeWith("[Other]\nPath = /x/\nConfigPath = /x/\n"), -52003);
}

TEST(Configuration, MissingConfigPathGivesTheSystemsError) {
    EXPECT_EQ(initializeWith(std::string(kSection) + "Path = /x/\n"), kValueMissing);
}

TEST(Configuration, MissingPathGivesTheSystemsErrorAndLeavesTheNamesAlone) {
    const TemporaryFolder state;
    const std::string names = "; by hand\n[MR00:00]\nModel=A\nTerminalName=TAV1\n";
    const fs::path file = state.file("zotavpci.ini", names);
    EXPECT_EQ(initializeWith(kSection + ("ConfigPath = " + state.path().string()) + "/\n"),
              kValueMissing);
    EXPECT_EQ(fs::file_size(file), names.size());
}

TEST(Configuration, PathWithoutASeparatorFindsNoDescriptions) {
    const TemporaryFolder state;
    const std::string text = kSection + ("Path = " + testplugin::kSampleDescriptions.string()) +
                             "\nConfigPath = " + state.path().string() + "/\n";
    EXPECT_EQ(initializeWith(text), 0);
}

TEST(Configuration, MissingStateFolderIsAnInternalFault) {
    EXPECT_EQ(initializeWith(kSection + ("Path = " + testplugin::kSampleDescriptions.string()) +
                             "/\nConfigPath = /nonexistent/state/\n"),
              kTavManErrSoftwareFault);
}

TEST(Configuration, MissingBusGivesTheBridgeLibrarysStatus) {
    const SampleMachine machine;
    const EnvironmentValue bus("TAV_PCI_DUMP", "/nonexistent/bus.dump");
    const PluginCopy plugin;
    EXPECT_EQ(plugin.initialize(), -313004);
}

} // namespace
