// Initialize and finalize in every order that a host may come up with.
#include "tests/plugin/pluginCopy.h"
#include "tests/support/environmentValue.h"

#include <gtest/gtest.h>

namespace {

using testplugin::kSampleDevices;
using testplugin::PluginCopy;
using testplugin::SampleMachine;

TEST(Lifetime, NullCountPointerIsInvalidEvenWithoutAList) {
    const PluginCopy plugin;
    EXPECT_EQ(plugin.getDeviceCount(nullptr), kTavManErrInvalidParam);
}

TEST(Lifetime, QueriesBeforeInitializeFail) {
    const PluginCopy plugin;
    std::int32_t value = 77;
    char text[TAVPLUGIN_TEXT_SIZE] = "untouched";
    EXPECT_EQ(plugin.countOrStatus(), kTavManErrSoftwareFault);
    EXPECT_EQ(plugin.getDeviceAttributeI32(0, kTavAttrBusNumber, &value), kTavManErrSoftwareFault);
    EXPECT_EQ(plugin.getDeviceAttributeUTF8(0, kTavAttrModelName, text), kTavManErrSoftwareFault);
    EXPECT_EQ(value, 77);
    EXPECT_STREQ(text, "untouched");
}

TEST(Lifetime, SecondInitializeLeavesTheListAsItIs) {
    const SampleMachine machine;
    const PluginCopy plugin;
    ASSERT_EQ(plugin.initialize(), 0);
    EXPECT_EQ(plugin.countOrStatus(), kSampleDevices);
    const testsupport::EnvironmentValue otherBus("TAV_PCI_DUMP", "/nonexistent");
    const testsupport::EnvironmentValue otherConfiguration("TAV_MANAGER_CONF", "/nonexistent");
    EXPECT_EQ(plugin.initialize(), 0);
    EXPECT_EQ(plugin.countOrStatus(), kSampleDevices);
}

TEST(Lifetime, FinalizeTwiceOrWithoutInitializeIsHarmless) {
    const SampleMachine machine;
    const PluginCopy plugin;
    plugin.finalize();
    ASSERT_EQ(plugin.initialize(), 0);
    plugin.finalize();
    plugin.finalize();
    EXPECT_EQ(plugin.countOrStatus(), kTavManErrSoftwareFault);
}

TEST(Lifetime, InitializeAfterFinalizeBuildsTheListAfresh) {
    const SampleMachine machine;
    const PluginCopy plugin;
    ASSERT_EQ(plugin.initialize(), 0);
    plugin.finalize();
    {
        const testsupport::TemporaryFolder folder;
        const testsupport::EnvironmentValue emptyBus("TAV_PCI_DUMP",
                                                     folder.file("bus.dump", "").string());
        ASSERT_EQ(plugin.initialize(), 0);
        EXPECT_EQ(plugin.countOrStatus(), 0);
        plugin.finalize();
    }
    ASSERT_EQ(plugin.initialize(), 0);
    EXPECT_EQ(plugin.countOrStatus(), kSampleDevices);
}

TEST(Lifetime, FailedInitializeAfterASuccessfulOneLeavesNoList) {
    const SampleMachine machine;
    const PluginCopy plugin;
    ASSERT_EQ(plugin.initialize(), 0);
    std::filesystem::remove(plugin.bridgeLibrary());
    EXPECT_EQ(plugin.initialize(), -52005);
    EXPECT_EQ(plugin.countOrStatus(), kTavManErrSoftwareFault);
}

TEST(Lifetime, MissingBridgeLibraryGivesTheLoadersStatus) {
    const SampleMachine machine;
    const PluginCopy plugin;
    std::filesystem::remove(plugin.bridgeLibrary());
    EXPECT_EQ(plugin.initialize(), -52005);
    EXPECT_EQ(plugin.countOrStatus(), kTavManErrSoftwareFault);
    EXPECT_FALSE(std::filesystem::exists(machine.state() / "zotavpci.ini"));
}

TEST(Lifetime, LibraryWithoutTheFunctionsGivesTheLoadersStatus) {
    const SampleMachine machine;
    const PluginCopy plugin;
    std::filesystem::remove(plugin.bridgeLibrary());
    std::filesystem::copy_file(ZOTAVPCI_FILE, plugin.bridgeLibrary());
    EXPECT_EQ(plugin.initialize(), -52005);
}

// What initialize gives to a destructor of the host that runs while an exception of the host
// passes.
std::int32_t initializedWhileUnwinding(const PluginCopy& plugin) {
    struct Initializer {
        ~Initializer() { status = plugin.initialize(); }
        const PluginCopy& plugin;
        std::int32_t& status;
    };
    std::int32_t status = 77;
    try {
        const Initializer initializer{plugin, status};
        throw 1;
    } catch (int) {
    }
    return status;
}

TEST(Lifetime, ExceptionsOfTheHostInFlightChangeNothing) {
    const SampleMachine machine;
    const PluginCopy plugin;
    {
        const testsupport::EnvironmentValue none("TAV_MANAGER_CONF", "/nonexistent");
        EXPECT_EQ(initializedWhileUnwinding(plugin), -52003);
        EXPECT_EQ(plugin.countOrStatus(), kTavManErrSoftwareFault);
    }
    EXPECT_EQ(initializedWhileUnwinding(plugin), 0);
    EXPECT_EQ(plugin.countOrStatus(), kSampleDevices);
    std::filesystem::remove(plugin.bridgeLibrary());
    EXPECT_EQ(initializedWhileUnwinding(plugin), -52005);
    EXPECT_EQ(plugin.initialize(), -52005);
}

TEST(Lifetime, BridgeLibraryIsLoadedOnlyDuringInitialize) {
    const SampleMachine machine;
    const PluginCopy plugin;
    ASSERT_EQ(plugin.initialize(), 0);
    std::string maps;
    {
        const auto file = std::unique_ptr<std::FILE, int (*)(std::FILE*)>(
            std::fopen("/proc/self/maps", "r"), &std::fclose);
        ASSERT_TRUE(file);
        char line[4096];
        while (std::fgets(line, sizeof line, file.get()))
            maps += line;
    }
    EXPECT_NE(maps.find(plugin.plugin().string()), std::string::npos);
    EXPECT_EQ(maps.find(plugin.bridgeLibrary().string()), std::string::npos);
}

TEST(Attributes, DeviceOutOfRangeIsInvalid) {
    const SampleMachine machine;
    const PluginCopy plugin;
    ASSERT_EQ(plugin.initialize(), 0);
    std::int32_t value = 77;
    char text[TAVPLUGIN_TEXT_SIZE] = "untouched";
    EXPECT_EQ(plugin.getDeviceAttributeI32(kSampleDevices, kTavAttrBusNumber, &value),
              kTavManErrInvalidParam);
    EXPECT_EQ(plugin.getDeviceAttributeUTF8(kSampleDevices, kTavAttrModelName, text),
              kTavManErrInvalidParam);
    EXPECT_EQ(plugin.getDeviceAttributeI32(0, kTavAttrModelName, &value), kTavManErrInvalidParam);
    EXPECT_EQ(plugin.getDeviceAttributeUTF8(0, kTavAttrBusNumber, text), kTavManErrInvalidParam);
    EXPECT_EQ(plugin.getDeviceAttributeI32(0, kTavAttrReserved9, &value),
              kTavManErrAttributeNotSupported);
    EXPECT_EQ(value, 77);
    EXPECT_STREQ(text, "untouched");
}

} // namespace
