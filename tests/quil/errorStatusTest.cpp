// The merge rule, the buffer's memory policy, and what happens to a text when a status is merged.
#include "quil/errorRecord.h"
#include "quil/setError.h"
#include "tests/quil/site.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <utility>

namespace {

using namespace nZOQUIL000;

int reallocations = 0;

bool countingReallocate(tErrorStatus& status, std::uint32_t requested) {
    ++reallocations;
    return reallocateDefault(status, requested);
}

TEST(ErrorStatus, FieldsStandInTheirFixedOrder) {
    static_assert(std::is_standard_layout_v<tErrorStatus>);
    EXPECT_EQ(offsetof(tErrorStatus, code), 0U);
    EXPECT_EQ(offsetof(tErrorStatus, capacity), 4U);
    EXPECT_LT(offsetof(tErrorStatus, reallocate), offsetof(tErrorStatus, text));
}

TEST(ErrorStatus, StartsAsSuccessWithoutText) {
    const tErrorStatus status;
    EXPECT_EQ(status.code, 0);
    EXPECT_EQ(status.capacity, 0U);
    EXPECT_EQ(status.text, nullptr);
    EXPECT_STREQ(status.textOrEmpty(), "");
}

TEST(MergeRule, SuccessYieldsToAnythingButSuccess) {
    EXPECT_FALSE(incomingWins(0, 0));
    EXPECT_TRUE(incomingWins(0, 5));
    EXPECT_TRUE(incomingWins(0, -5));
}

TEST(MergeRule, FirstErrorWins) {
    EXPECT_FALSE(incomingWins(-1, -2));
    EXPECT_FALSE(incomingWins(-1, 3));
    EXPECT_FALSE(incomingWins(-1, 0));
}

TEST(MergeRule, WarningYieldsOnlyToAnError) {
    EXPECT_TRUE(incomingWins(5, -1));
    EXPECT_FALSE(incomingWins(5, 6));
    EXPECT_FALSE(incomingWins(5, 0));
}

TEST(ErrorStatus, SecondErrorChangesNothingAndReportsFalse) {
    tErrorStatus status;
    ASSERT_TRUE(setError(status, -388801, kSite));
    const std::string before = status.text;
    EXPECT_FALSE(setError(status, -388802, siteHere("other", "kOther")));
    EXPECT_EQ(status.code, -388801);
    EXPECT_EQ(before, status.text);
}

TEST(ErrorStatus, MergingALaterErrorChangesNothingAndReportsFalse) {
    tErrorStatus status;
    ASSERT_TRUE(setError(status, -388801, kSite));
    const std::string before = status.text;
    tErrorStatus later;
    ASSERT_TRUE(setError(later, -388802, siteHere("other", "kOther")));
    EXPECT_FALSE(mergeStatus(status, later));
    EXPECT_FALSE(mergeStatus(status, std::move(later)));
    EXPECT_EQ(status.code, -388801);
    EXPECT_EQ(before, status.text);
}

TEST(ErrorStatus, ErrorReplacesAWarning) {
    tErrorStatus status;
    ASSERT_TRUE(setError(status, 5, siteHere("warning", "kWarning")));
    EXPECT_TRUE(setError(status, -388802, kSite));
    EXPECT_EQ(status.code, -388802);
    EXPECT_NE(std::strstr(status.text, "kTavManErrInvalidParam"), nullptr);
    EXPECT_EQ(std::strstr(status.text, "kWarning"), nullptr);
}

TEST(ErrorStatus, SettingSuccessOnSuccessChangesNothing) {
    tErrorStatus status;
    EXPECT_FALSE(setError(status, 0, kSite));
    EXPECT_EQ(status.text, nullptr);
}

TEST(ErrorStatus, SingleRaiseAllocatesOnce) {
    tErrorStatus status;
    status.reallocate = &countingReallocate;
    reallocations = 0;
    ASSERT_TRUE(setError(status, -388802, kSite));
    EXPECT_EQ(reallocations, 1);
    EXPECT_EQ(status.capacity, 512U);
}

TEST(DefaultReallocator, RoundsUpToPowersOfTwoFrom512) {
    tErrorStatus status;
    EXPECT_TRUE(reallocateDefault(status, 1));
    EXPECT_EQ(status.capacity, 512U);
    EXPECT_TRUE(reallocateDefault(status, 512));
    EXPECT_EQ(status.capacity, 512U);
    EXPECT_TRUE(reallocateDefault(status, 513));
    EXPECT_EQ(status.capacity, 1024U);
    EXPECT_TRUE(reallocateDefault(status, 4097));
    EXPECT_EQ(status.capacity, 8192U);
}

TEST(DefaultReallocator, NewBufferIsAnEmptyObjectZeroesAndTheMarker) {
    tErrorStatus status;
    ASSERT_TRUE(reallocateDefault(status, 10));
    EXPECT_STREQ(status.text, "{}");
    for (std::size_t i = 2; i < 511; ++i)
        ASSERT_EQ(status.text[i], 0) << i;
    EXPECT_EQ(status.text[511], 'J');
}

TEST(DefaultReallocator, GrowingKeepsTextAndMovesTheMarker) {
    tErrorStatus status;
    ASSERT_TRUE(setError(status, -1, kSite));
    const std::string before = status.text;
    ASSERT_TRUE(reallocateDefault(status, 600));
    EXPECT_EQ(before, status.text);
    for (std::size_t i = before.size(); i < 1023; ++i)
        ASSERT_EQ(status.text[i], 0) << i;
    EXPECT_EQ(status.text[1023], 'J');
}

TEST(DefaultReallocator, RefusesMoreThanTwoGigabytes) {
    tErrorStatus status;
    EXPECT_FALSE(reallocateDefault(status, 0x80000000U));
    EXPECT_EQ(status.capacity, 0U);
    EXPECT_EQ(status.text, nullptr);
}

TEST(DefaultReallocator, ZeroReleases) {
    tErrorStatus status;
    ASSERT_TRUE(reallocateDefault(status, 1));
    EXPECT_TRUE(reallocateDefault(status, 0));
    EXPECT_EQ(status.capacity, 0U);
    EXPECT_EQ(status.text, nullptr);
}

TEST(ErrorStatus, BufferWithoutAReleaseFunctionGoesBackToTheHeap) {
    tErrorStatus status;
    status.reallocate = nullptr;
    status.text = static_cast<char*>(std::malloc(16));
    status.capacity = 16;
    status.releaseText();
    EXPECT_EQ(status.text, nullptr);
    EXPECT_EQ(status.capacity, 0U);
}

TEST(MergeStatus, TakesOverTheBufferOfAStatusWithTheSameReallocator) {
    tErrorStatus source;
    ASSERT_TRUE(setError(source, -7, kSite));
    const char* buffer = source.text;
    tErrorStatus destination;
    EXPECT_TRUE(mergeStatus(destination, std::move(source)));
    EXPECT_EQ(destination.code, -7);
    EXPECT_EQ(destination.text, buffer);
    EXPECT_EQ(destination.capacity, 512U);
    EXPECT_EQ(source.text, nullptr); // NOLINT(bugprone-use-after-move): its documented state
    EXPECT_EQ(source.capacity, 0U);
    EXPECT_EQ(source.code, -7);
}

TEST(MergeStatus, CopiesTheTextOfAStatusWithAnotherReallocator) {
    tErrorStatus source;
    source.reallocate = &countingReallocate;
    ASSERT_TRUE(setError(source, -7, kSite));
    tErrorStatus destination;
    EXPECT_TRUE(mergeStatus(destination, std::move(source)));
    ASSERT_NE(destination.text, nullptr);
    ASSERT_NE(source.text, nullptr); // NOLINT(bugprone-use-after-move)
    EXPECT_NE(destination.text, source.text);
    EXPECT_STREQ(destination.text, source.text);
}

TEST(MergeStatus, LosingSourceLeavesTheDestinationAlone) {
    tErrorStatus source;
    tErrorStatus destination;
    ASSERT_TRUE(setError(source, -8, kSite));
    ASSERT_TRUE(setError(destination, -7, siteHere("first", "kFirst")));
    const std::string before = destination.text;
    EXPECT_FALSE(mergeStatus(destination, std::move(source)));
    EXPECT_EQ(destination.code, -7);
    EXPECT_EQ(before, destination.text);
    EXPECT_NE(source.text, nullptr); // NOLINT(bugprone-use-after-move)
}

TEST(MergeStatus, CopyLeavesTheSourceAsItWas) {
    tErrorStatus source;
    ASSERT_TRUE(setError(source, -8, kSite));
    tErrorStatus destination;
    EXPECT_TRUE(mergeStatus(destination, std::as_const(source)));
    ASSERT_NE(source.text, nullptr);
    EXPECT_STREQ(destination.text, source.text);
}

} // namespace
