// Waiting for a moment.
#include "platform/pause.h"

#include <gtest/gtest.h>

#include <chrono>

namespace {

using std::chrono::milliseconds;

TEST(Pause, LastsAtLeastAsLongAsIsAsked) {
    const auto before = std::chrono::steady_clock::now();
    platform::pause(milliseconds(20));
    // A system may count its own ticks, a little apart from the clock's.
    EXPECT_GE(std::chrono::steady_clock::now() - before, milliseconds(15));
}

} // namespace
