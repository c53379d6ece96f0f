// Work in threads with results in order.
#include "tavctl/words/orderedWork.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <thread>

namespace {

using tavctl::resultsInOrder;

TEST(OrderedWork, HandsOverEachResultInOrderInTheCallingThread) {
    constexpr std::size_t kCount = 500;
    std::vector<std::size_t> taken;
    const auto caller = std::this_thread::get_id();
    resultsInOrder<std::unique_ptr<std::size_t>>(
        kCount,
        [](std::size_t index) {
            // The first of each few is the last one made.
            if (index % 7 == 0)
                std::this_thread::sleep_for(std::chrono::microseconds(200));
            return std::make_unique<std::size_t>(index * index);
        },
        [&](std::size_t index, std::unique_ptr<std::size_t> result) {
            EXPECT_EQ(*result, index * index);
            EXPECT_EQ(std::this_thread::get_id(), caller);
            taken.push_back(index);
        });
    std::vector<std::size_t> wanted(kCount);
    std::iota(wanted.begin(), wanted.end(), std::size_t{0});
    EXPECT_EQ(taken, wanted);
}

TEST(OrderedWork, IsNeverFurtherAheadThanTheWindow) {
    constexpr std::size_t kWindow = 3;
    std::atomic<std::size_t> made = 0;
    std::size_t taken = 0;
    std::size_t furthest = 0;
    tavctl::workInOrder(
        200, kWindow, [&](std::size_t) { ++made; },
        [&](std::size_t) {
            furthest = std::max(furthest, made.load() - taken);
            ++taken;
        });
    EXPECT_EQ(taken, 200U);
    EXPECT_LE(furthest, kWindow);
}

TEST(OrderedWork, MakesInSeveralThreadsWhereThereAreProcessors) {
    std::atomic<int> atOnce = 0;
    std::atomic<int> most = 0;
    tavctl::workInOrder(
        2, 2,
        [&](std::size_t) {
            most = std::max(most.load(), ++atOnce);
            for (int i = 0; i < 2000 && most < 2 && std::thread::hardware_concurrency() > 1; ++i)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            --atOnce;
        },
        [](std::size_t) {});
    EXPECT_EQ(most, std::thread::hardware_concurrency() > 1 ? 2 : 1);
}

TEST(OrderedWork, RaisesInItsTurnWhatTheMakingRaised) {
    std::vector<std::size_t> taken;
    const auto run = [&] {
        resultsInOrder<int>(
            100,
            [](std::size_t index) {
                if (index == 40)
                    throw std::runtime_error("the fortieth");
                return 0;
            },
            [&](std::size_t index, int) { taken.push_back(index); });
    };
    EXPECT_THROW(run(), std::runtime_error);
    EXPECT_EQ(taken.size(), 40U);
}

TEST(OrderedWork, EndsWhenTheTakingRaises) {
    std::atomic<std::size_t> made = 0;
    const auto run = [&] {
        tavctl::workInOrder(
            100000, 4, [&](std::size_t) { ++made; },
            [](std::size_t index) {
                if (index == 10)
                    throw std::runtime_error("enough");
            });
    };
    EXPECT_THROW(run(), std::runtime_error);
    EXPECT_LE(made, 15U);
}

TEST(OrderedWork, OfNothingCallsNothing) {
    const auto never = [](std::size_t) { FAIL(); };
    tavctl::workInOrder(0, 4, never, never);
}

} // namespace
