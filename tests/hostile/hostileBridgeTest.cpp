// The plug-in over a bridge library that answers at random, run after run, each from a seed of its
// own. TAV_SEED in the environment repeats one run.
#include "platform/dynamicLibrary.h"
#include "tests/hostile/bridge/control.h"
#include "tests/hostile/documentedStatuses.h"
#include "tests/hostile/memory.h"
#include "tests/plugin/pluginCopy.h"
#include "tests/support/effort.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>

namespace {

using testhostile::kMegabyte;
namespace fs = std::filesystem;
using hostilebridge::Control;
using testplugin::PluginCopy;
using testplugin::SampleMachine;

// Three models, each with as many candidates as there can be, of which each is looked at with every
// described bridge and then walked.
constexpr std::uint64_t kMostCalls = 10'000'000;

// The bridge library keeps nothing, and an initialize no more than its device records.
constexpr std::size_t kMostGrowth = kMegabyte / 4;

// What the alarm's handler needs: a run that hangs must not hide its seed.
char runningSeed[64];

extern "C" void tellSeed(int) {
    static_cast<void>(!write(STDERR_FILENO, runningSeed, sizeof runningSeed));
    abort();
}

class HostileHost {
public:
    HostileHost() {
        fs::copy_file(HOSTILE_BRIDGE_FILE, plugin_.bridgeLibrary(),
                      fs::copy_options::overwrite_existing);
        if (!library_.load(plugin_.bridgeLibrary().string().c_str()))
            throw std::runtime_error(library_.failureText());
        control_ = reinterpret_cast<hostilebridge::ControlAccess>(
            library_.symbol(hostilebridge::kControlSymbol))();
        control_->behind = ZOPCIBRD_FILE;
        control_->mostCalls = kMostCalls;
        signal(SIGALRM, tellSeed);
    }

    // Two initialises on one state folder, so that the second meets what the first has stored.
    void run(std::uint64_t seed) {
        std::snprintf(runningSeed, sizeof runningSeed, "no end in sight: TAV_SEED=%llu\n",
                      static_cast<unsigned long long>(seed));
        alarm(120);
        control_->begin(seed);
        fs::remove(machine_.state() / "zotavpci.ini");
        for (int cycle = 0; cycle < 2; ++cycle) {
            control_->calls = 0;
            initializeAndQuery();
            plugin_.finalize();
            mostCalls = std::max(mostCalls, control_->calls);
            calls += control_->calls;
        }
        alarm(0);
    }

    std::uint64_t calls = 0;
    std::uint64_t mostCalls = 0;
    std::uint64_t devices = 0;
    std::uint64_t failures = 0;
    std::set<std::int32_t> statuses;

private:
    void initializeAndQuery() {
        control_->sessionStatus = 0;
        const std::int32_t status = plugin_.initialize();
        EXPECT_LE(status, 0);
        EXPECT_TRUE(testhostile::isDocumentedInitialize(status, control_->sessionStatus)) << status;
        statuses.insert(status);
        failures += status == 0 ? 0 : 1;
        const std::int64_t count = plugin_.countOrStatus();
        EXPECT_EQ(count < 0, status < 0);
        EXPECT_TRUE(status == 0 || count == kTavManErrSoftwareFault) << count;
        // Of very many devices the first and the last ones, and one that is not there.
        const auto end = static_cast<std::uint32_t>(std::max<std::int64_t>(count, 0));
        devices += end;
        for (std::uint32_t device = 0; device <= end; ++device) {
            if (device < 20 || device + 20 > end)
                queryEverything(device, device < end);
        }
    }

    void queryEverything(std::uint32_t device, bool isThere) {
        constexpr std::uint32_t kAttributes = 14; // one more on each side than there are
        for (std::uint32_t attribute = 0; attribute < kAttributes; ++attribute) {
            for (const std::uint32_t index : {0U, 1U, 2U, 255U}) {
                std::int32_t value = 0;
                const std::int32_t integer = plugin_.getDeviceAttributeI32(
                    device, 0x01000000 + attribute * 0x100 + index, &value);
                EXPECT_TRUE(testhostile::isDocumentedQuery(integer)) << integer;
                std::array<char, TAVPLUGIN_TEXT_SIZE + 1> text;
                text.fill('#');
                const std::int32_t status = plugin_.getDeviceAttributeUTF8(
                    device, 0x02000000 + attribute * 0x100 + index, text.data());
                EXPECT_TRUE(testhostile::isDocumentedQuery(status)) << status;
                EXPECT_EQ(text.back(), '#');
                EXPECT_TRUE(status != 0 || std::find(text.begin(), text.end(), '\0') != text.end());
            }
        }
        std::int32_t category = 0;
        const std::int32_t status =
            plugin_.getDeviceAttributeI32(device, kTavAttrDeviceCategory, &category);
        EXPECT_EQ(status == 0, isThere);
        EXPECT_TRUE(!isThere ||
                    (category >= kTavCategoryPci && category <= kTavCategorySwitchboxTav));
    }

    SampleMachine machine_;
    PluginCopy plugin_;
    platform::DynamicLibrary library_;
    Control* control_ = nullptr;
};

TEST(HostileBridge, RandomAnswersGiveDocumentedStatusesAndCostNoMemory) {
    HostileHost host;
    if (const char* const only = std::getenv("TAV_SEED")) {
        host.run(std::strtoull(only, nullptr, 10));
        return;
    }
    constexpr std::uint64_t kWarmUp = 200; // what the C library keeps for later is kept by then
    const std::uint64_t runs =
        testsupport::effort(testsupport::isSanitized() ? 3'000 : 5'000, 100'000);
    std::size_t live = 0;
    for (std::uint64_t seed = 1; seed <= runs; ++seed) {
        host.run(seed);
        if (seed == kWarmUp)
            live = testhostile::liveBytes();
        if (seed > kWarmUp && testhostile::liveBytes() > live + kMostGrowth)
            ADD_FAILURE() << "memory is kept: " << testhostile::liveBytes() - live << " bytes";
        if (HasFailure())
            FAIL() << "TAV_SEED=" << seed;
    }
    EXPECT_LT(testhostile::peakResidentBytes(), testhostile::memoryBound(0, 0) + 128 * kMegabyte);
    // The library is hostile only if much goes wrong, and is met only if much does not.
    EXPECT_GT(host.devices, runs);
    EXPECT_GT(host.failures, runs / 20);
    EXPECT_GT(host.statuses.size(), 20U);
    testsupport::figure(runs, "random runs over a hostile bridge library");
    testsupport::figure(host.calls, "random answers of it");
    testsupport::figure(host.mostCalls, "calls of it at most in one initialise");
    testsupport::figure(testhostile::peakResidentBytes() / kMegabyte,
                        "megabytes of memory occupied at most");
}

} // namespace
