// Whatever a host asks of tavHost.h, it allocates nothing: over a plug-in that allocates nothing
// either.
#include "tests/support/allocationFaults.h"

#include <gtest/gtest.h>
#include <tavHost.h>

#include <cstdlib>
#include <memory>

namespace {

using testsupport::AllocationFault;

// Answers how many bytes of text there are, so that no call is left out as useless.
std::size_t askForEverything(tav::Plugin& plugin) {
    std::size_t bytes = 0;
    const tav::Status status = plugin.initialize();
    bytes += status.decimal().view().size() + status.hexadecimal().view().size() +
             status.words().size() + plugin.reason().size();
    for (const tav::Device device : plugin.devices()) {
        bytes += device.name().value().view().size() + device.model().value().view().size();
        bytes += words(device.category().value()).size() + device.address().value().bus;
        bytes += device.upstreamBus().valueOr(1) + device.linkWidthPerLabel().valueOr(1);
        for (const tav::Port port : device.ports())
            bytes += port.label().value().view().size() + port.secondaryBus().value() +
                     port.linkWidth().value() + port.linkSpeed().value().megatransfers();
    }
    plugin.finalize();
    return bytes;
}

TEST(HostAllocations, AreNone) {
    tav::Plugin plugin;
    ASSERT_EQ(plugin.load(SCRIPTED_PLUGIN_FILE), tav::Loading::done);
    std::size_t bytes = 0;
    bool happened = false;
    {
        const AllocationFault fault(1);
        bytes = askForEverything(plugin);
        happened = fault.happened();
    }
    EXPECT_FALSE(happened);
    EXPECT_GT(bytes, 1000U);
}

// That the test above would see one.
TEST(HostAllocations, AreSeen) {
    bool happened = false;
    {
        const AllocationFault fault(1);
        const std::unique_ptr<int> memory(new (std::nothrow) int(1));
        happened = fault.happened() && memory == nullptr;
    }
    EXPECT_TRUE(happened);
}

} // namespace
