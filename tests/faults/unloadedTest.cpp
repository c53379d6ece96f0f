// A host that unloads the plug-in as it is, without finalising it: nothing stays behind.
#include "tests/faults/faultMachine.h"
#include "tests/faults/pluginCycle.h"
#include "tests/support/allocationFaults.h"
#include "tests/support/pluginFunctions.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdint>

namespace {

using testfaults::FaultMachine;

// Under the address sanitizer blocks cannot be balanced; it finds by itself what nobody refers to
// any more, when the program ends.
#ifdef TAV_SANITIZED
constexpr bool kIsBalanced = false;
#else
constexpr bool kIsBalanced = true;
#endif

// What a plug-in leaves that is loaded, initialised this often, and unloaded.
std::int64_t blocksLeftAfter(int initializations) {
    const std::int64_t before = testsupport::liveAllocations();
    {
        platform::DynamicLibrary library;
        testsupport::PluginFunctions plugin;
        plugin.load(library, ZOTAVPCI_FILE);
        for (int n = 0; n < initializations; ++n) {
            EXPECT_EQ(plugin.initialize(), 0);
            std::uint32_t devices = 0;
            EXPECT_EQ(plugin.getDeviceCount(&devices), 0);
            EXPECT_EQ(devices, FaultMachine::kDevices);
        }
    }
    dlerror(); // gives back what the loader said last
    dlerror();
    return testsupport::liveAllocations() - before;
}

TEST(Unloaded, WithoutFinalizeNothingIsLeft) {
    FaultMachine machine;
    machine.reset(FaultMachine::Names::none);
    testfaults::warmUp();
    for (int initializations = 0; initializations < 3; ++initializations)
        EXPECT_TRUE(blocksLeftAfter(initializations) == 0 || !kIsBalanced) << initializations;
}

} // namespace
