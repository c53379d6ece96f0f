// Numbers that nobody can foresee, and what stands in for them.
#include "platform/randomSeed.h"

#include "platform/guessedSeed.h"

#include <gtest/gtest.h>

#include <bit>
#include <cerrno>
#include <cstdint>
#include <set>

namespace {

// Different ones, and over all of their bits.
void expectSpread(std::uint64_t (*seed)()) {
    constexpr int kSeeds = 1000;
    std::set<std::uint64_t> seeds;
    std::uint64_t everSet = 0;
    std::uint64_t everClear = 0;
    for (int n = 0; n < kSeeds; ++n) {
        const std::uint64_t value = seed();
        seeds.insert(value);
        everSet |= value;
        everClear |= ~value;
    }
    EXPECT_EQ(seeds.size(), kSeeds);
    EXPECT_EQ(std::popcount(everSet), 64);
    EXPECT_EQ(std::popcount(everClear), 64);
}

TEST(RandomSeed, IsAnotherEachTime) {
    expectSpread([] { return platform::randomSeed(); });
}

TEST(RandomSeed, IsAnotherEachTimeWhereTheSystemHasNone) {
    expectSpread([] { return platform::guessedSeed(0, 0); });
}

TEST(RandomSeed, LeavesTheLastErrorAlone) {
    errno = 77;
    platform::randomSeed();
    EXPECT_EQ(errno, 77);
}

} // namespace
