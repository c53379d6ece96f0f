// The plug-in on a thread of Windows for which little stack is reserved.
#include "tests/plugin/pluginCopy.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdint>
#include <functional>

namespace {

using testplugin::kSampleDevices;
using testplugin::PluginCopy;
using testplugin::SampleMachine;

struct Work {
    const std::function<void()>& run;
    std::size_t used = 0; // of the stack, below the thread's first function
};

constexpr std::size_t kPainted = 40 * std::size_t{1024};
constexpr char kPaint = 0x5A;

// What of the stack has been used is seen by paint that is gone. Where the system keeps pages back
// until they are touched, it wants them touched from the top down.
DWORD WINAPI runThread(void* parameter) {
    Work& work = *static_cast<Work*>(parameter);
    char here = 0;
    volatile char* const top = &here - 512; // below what this function has on the stack itself
    for (std::size_t i = 0; i < kPainted; ++i)
        *(top - i) = kPaint;
    work.run();
    work.used = kPainted;
    while (work.used != 0 && *(top - work.used + 1) == kPaint)
        --work.used;
    return 0;
}

// On a thread with so much stack reserved, or more: Windows rounds up to 64 kB, Wine to more.
Work onReservedStack(std::size_t bytes, const std::function<void()>& run) {
    Work work{run};
    const HANDLE thread =
        CreateThread(nullptr, bytes, runThread, &work, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    EXPECT_NE(thread, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    CloseHandle(thread);
    return work;
}

TEST(SmallReservation, HoldsALifeWithoutAndWithANameFile) {
    const SampleMachine machine;
    const PluginCopy plugin;
    for (int life = 0; life < 2; ++life) {
        std::int32_t status = 77;
        std::int64_t devices = 0;
        const Work work = onReservedStack(32 * 1024, [&] {
            status = plugin.initialize();
            devices = plugin.countOrStatus();
            plugin.finalize();
        });
        EXPECT_EQ(status, 0);
        EXPECT_EQ(devices, kSampleDevices);
        EXPECT_GT(work.used, 1024U);
        // What the system's functions take for themselves is part of it.
        EXPECT_LE(work.used, 32 * 1024U);
    }
}

} // namespace
