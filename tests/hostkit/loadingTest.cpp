// tav::Plugin: loaded, not loaded, the wrong library, and what comes before and after a list.
#include "platform/utf8Path.h"
#include "tests/plugin/pluginCopy.h"
#include "tests/support/environmentValue.h"
#include "tests/support/libraryFolder.h"
#include "tests/support/temporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tavHost.h>

#include <string>
#include <type_traits>

namespace {

using tav::Loading;
using testing::HasSubstr;

static_assert(!std::is_copy_constructible_v<tav::Plugin>);
static_assert(!std::is_move_constructible_v<tav::Plugin>);

void expectNoList(const tav::Plugin& plugin) {
    EXPECT_TRUE(plugin.deviceCount().status().isSoftwareFault());
    EXPECT_TRUE(plugin.devices().empty());
    EXPECT_TRUE(plugin.device(0).name().status().isSoftwareFault());
    EXPECT_TRUE(plugin.device(0).portCount().status().isSoftwareFault());
    EXPECT_TRUE(plugin.device(0).ports().empty());
    EXPECT_TRUE(plugin.device(0).port(0).label().status().isSoftwareFault());
}

TEST(HostLoading, NothingLoadedIsNoList) {
    tav::Plugin plugin;
    EXPECT_FALSE(plugin.isLoaded());
    EXPECT_TRUE(plugin.initialize().isSoftwareFault());
    expectNoList(plugin);
    plugin.finalize();
    plugin.unload();
    EXPECT_EQ(plugin.reason(), "");
}

TEST(HostLoading, AMissingFileIsTold) {
    const testsupport::TemporaryFolder folder;
    tav::Plugin plugin;
    const std::string file = platform::utf8Text(folder.path() / "absent.library");
    EXPECT_EQ(plugin.load(file.c_str()), Loading::noLibrary);
    EXPECT_FALSE(plugin.isLoaded());
    EXPECT_THAT(std::string(plugin.reason()), HasSubstr("absent.library"));
    expectNoList(plugin);
}

TEST(HostLoading, AFileThatIsNoLibraryIsTold) {
    const testsupport::TemporaryFolder folder;
    tav::Plugin plugin;
    const std::string file = platform::utf8Text(folder.file("text.library", "no library\n"));
    EXPECT_EQ(plugin.load(file.c_str()), Loading::noLibrary);
    EXPECT_THAT(std::string(plugin.reason()), HasSubstr("text.library"));
}

TEST(HostLoading, AVeryLongPathIsRefused) {
    tav::Plugin plugin;
    const std::string file = "/" + std::string(5000, 'x');
    EXPECT_EQ(plugin.load(file.c_str()), Loading::noLibrary);
    EXPECT_FALSE(plugin.reason().empty());
    EXPECT_LT(plugin.reason().size(), std::size_t{TAVLIBRARY_REASON_SIZE});
}

TEST(HostLoading, AnotherLibraryLacksTheFunctions) {
    tav::Plugin plugin;
    EXPECT_EQ(plugin.load(ZOPCIBRD_FILE), Loading::noFunction);
    EXPECT_FALSE(plugin.isLoaded());
    EXPECT_EQ(plugin.reason(), "the library has no function tavPlugin_initialize");
    expectNoList(plugin);
}

TEST(HostLoading, LoadsAgainAfterAFailure) {
    tav::Plugin plugin;
    EXPECT_EQ(plugin.load(ZOPCIBRD_FILE), Loading::noFunction);
    EXPECT_EQ(plugin.load(ZOTAVPCI_FILE), Loading::done);
    EXPECT_TRUE(plugin.isLoaded());
    EXPECT_EQ(plugin.reason(), "");
    EXPECT_EQ(plugin.load("/absent"), Loading::noLibrary);
    EXPECT_FALSE(plugin.isLoaded());
    EXPECT_TRUE(plugin.initialize().isSoftwareFault());
}

TEST(HostLoading, TheListIsThereBetweenInitialisingAndFinalising) {
    tav::Plugin plugin;
    ASSERT_EQ(plugin.load(SCRIPTED_PLUGIN_FILE), Loading::done);
    expectNoList(plugin);
    ASSERT_TRUE(plugin.initialize().ok());
    EXPECT_EQ(plugin.deviceCount().value(), 2U);
    plugin.finalize();
    EXPECT_TRUE(plugin.isLoaded());
    expectNoList(plugin);
    ASSERT_TRUE(plugin.initialize().ok());
    const tav::Device device = plugin.device(0);
    EXPECT_TRUE(device.model().ok());
    plugin.unload();
    EXPECT_TRUE(device.model().status().isSoftwareFault());
}

TEST(HostLoading, TheEndFinalises) {
    tav::Plugin other;
    ASSERT_EQ(other.load(SCRIPTED_PLUGIN_FILE), Loading::done);
    {
        tav::Plugin plugin;
        ASSERT_EQ(plugin.load(SCRIPTED_PLUGIN_FILE), Loading::done);
        ASSERT_TRUE(plugin.initialize().ok());
        EXPECT_TRUE(other.deviceCount().ok());
    }
    expectNoList(other);
}

TEST(HostLoading, AMachineWithoutConfigurationIsTold) {
    const testsupport::EnvironmentValue none("TAV_MANAGER_CONF", "/nonexistent/tav-manager.conf");
    testsupport::findLibrariesIn(std::filesystem::path(ZOPCIBRD_FILE).parent_path());
    tav::Plugin plugin;
    ASSERT_EQ(plugin.load(ZOTAVPCI_FILE), Loading::done);
    const tav::Status status = plugin.initialize();
    EXPECT_EQ(status.code(), -52003);
    EXPECT_THAT(std::string(status.words()), HasSubstr("no configuration"));
    expectNoList(plugin);
}

TEST(HostLoading, AMachineWithoutDevicesHasAnEmptyList) {
    const testsupport::TemporaryFolder folder;
    const testsupport::ConfiguredMachine machine(
        folder.file("bus.dump", "00:00.0 \n00: 86 80 37 12 00 00 00 00 00 00 00 06 00 00 00 00\n"
                                "10: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"
                                "20: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"
                                "30: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"),
        {testplugin::kSampleDescriptions.string() + "/", folder.path().string() + "/"});
    testsupport::findLibrariesIn(std::filesystem::path(ZOPCIBRD_FILE).parent_path());
    tav::Plugin plugin;
    ASSERT_EQ(plugin.load(ZOTAVPCI_FILE), Loading::done);
    ASSERT_EQ(plugin.initialize(), tav::Status());
    EXPECT_TRUE(plugin.deviceCount().ok());
    EXPECT_EQ(plugin.deviceCount().value(), 0U);
    EXPECT_TRUE(plugin.devices().empty());
    EXPECT_TRUE(plugin.device(0).name().status().isInvalidParam());
}

} // namespace
