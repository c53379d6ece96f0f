// The plug-in on threads with little stack, of a host that keeps other things behind the guard
// page: everything runs in 32 kB, and what does not fit ends at the guard page and touches nothing
// behind it.
#include "tests/plugin/pluginCopy.h"
#include "tests/support/busBuilder.h"
#include "tests/support/environmentValue.h"
#include "tests/support/guardedStack.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <memory>
#include <string>

namespace {

namespace fs = std::filesystem;
using testplugin::kSampleDevices;
using testplugin::PluginCopy;
using testplugin::SampleMachine;
using testsupport::EnvironmentValue;
using testsupport::GuardedStack;

constexpr std::size_t kStack = 32 * std::size_t{1024};

void onSmallStack(const std::function<void()>& work) {
    GuardedStack stack(kStack);
    stack.runThread(work);
    EXPECT_EQ(stack.changedBehindGuard(), 0U);
    EXPECT_GT(stack.used(), 0U);
    EXPECT_LE(stack.used(), kStack);
}

// Initialises, asks each device for everything, and finalises.
std::int32_t live(const PluginCopy& plugin, std::uint32_t& devices) {
    const std::int32_t status = plugin.initialize();
    if (status != 0)
        return status;
    plugin.getDeviceCount(&devices);
    char text[TAVPLUGIN_TEXT_SIZE];
    std::int32_t value = 0;
    for (std::uint32_t device = 0; device <= devices; ++device) {
        for (std::uint32_t attribute = 1; attribute < 0x20; ++attribute) {
            for (const std::uint32_t index : {0U, 1U, 0xFFU}) {
                plugin.getDeviceAttributeI32(device, 0x01000000 | attribute << 8 | index, &value);
                plugin.getDeviceAttributeUTF8(device, 0x03000000 | attribute << 8 | index, text);
            }
        }
        plugin.getDeviceAttributeUTF8(device, kTavAttrModelName, text);
        plugin.getDeviceAttributeUTF8(device, kTavAttrTerminalName, text);
    }
    plugin.finalize();
    return status;
}

void expectLife(const PluginCopy& plugin, std::int32_t expected, std::uint32_t expectedDevices) {
    std::int32_t status = 77;
    std::uint32_t devices = 0;
    onSmallStack([&] { status = live(plugin, devices); });
    EXPECT_EQ(status, expected);
    EXPECT_EQ(devices, expectedDevices);
}

TEST(SmallStack, HoldsALifeWithoutAndWithANameFile) {
    const SampleMachine machine;
    const PluginCopy plugin;
    expectLife(plugin, 0, kSampleDevices);
    const std::string names = machine.names();
    EXPECT_NE(names, "");
    expectLife(plugin, 0, kSampleDevices);
    EXPECT_EQ(machine.names(), names);
}

TEST(SmallStack, HoldsALifeOnAFullBusOfADumpAndOfSysfs) {
    const SampleMachine machine;
    const PluginCopy plugin;
    const testsupport::TemporaryFolder folder;
    const testsupport::BusBuilder bus = testsupport::bigBus();
    bus.writeSysfs(folder.path() / "sys");
    for (const fs::path& path : {folder.path() / "sys", folder.file("bus.dump", bus.dump())}) {
        const EnvironmentValue location("TAV_PCI_DUMP", path.string());
        expectLife(plugin, 0, 0);
    }
}

TEST(SmallStack, HoldsEveryFailure) {
    const SampleMachine machine;
    const PluginCopy plugin;
    {
        const EnvironmentValue none("TAV_MANAGER_CONF", "/nonexistent");
        expectLife(plugin, -52003, 0);
    }
    {
        const testsupport::TemporaryFolder folder;
        const EnvironmentValue bad("TAV_PCI_DUMP", folder.file("bus.dump", "00: zz\n").string());
        std::int32_t status = 0;
        std::uint32_t devices = 0;
        onSmallStack([&] { status = live(plugin, devices); });
        EXPECT_LT(status, 0);
    }
    {
        const testsupport::ConfiguredMachine faulty(
            testplugin::kSampleDump,
            {TAV_SOURCE_DIR "/tests/system/cases/faulty-description/descriptions/",
             machine.state().string() + "/"});
        const PluginCopy fresh; // the other has its descriptions by now
        expectLife(fresh, kTavManErrSoftwareFault, 0);
    }
    fs::remove(plugin.bridgeLibrary());
    expectLife(plugin, -52005, 0);
}

// One of the two statuses with which a child process says how the work ended.
constexpr int kDone = 5;

// In a child process, for it may end by a signal: what waitpid() says.
int runInChild(GuardedStack& stack, const std::function<void()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        const rlimit noCore = {0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        std::signal(SIGSEGV, SIG_DFL);
        stack.run(work);
        _exit(kDone);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

TEST(SmallStack, ThatIsTooSmallEndsAtItsGuardPage) {
    const SampleMachine machine;
    const PluginCopy plugin;
    int overflows = 0;
    for (std::size_t pages = 1; pages <= 8; ++pages) {
        SCOPED_TRACE(pages);
        GuardedStack stack(pages * 4096);
        const int status = runInChild(stack, [&] {
            if (plugin.initialize() != 0)
                _exit(kDone + 1);
            plugin.finalize();
        });
        if (WIFSIGNALED(status)) {
            EXPECT_EQ(WTERMSIG(status), SIGSEGV);
            ++overflows;
        } else {
            EXPECT_EQ(WEXITSTATUS(status), kDone);
        }
        EXPECT_EQ(stack.changedBehindGuard(), 0U);
    }
    EXPECT_GE(overflows, 1);
    EXPECT_LT(overflows, 8);
}

} // namespace
