// The hash index gives the answers of a walk from the front, in every state.
#include "pxidrivertools/ini/iniIndex.h"

#include "tests/pxidrivertools/iniHelpers.h"

#include <random>

namespace {

using namespace ini;

class IniIndexTest : public testing::TestWithParam<bool> {
protected:
    ~IniIndexTest() override {
        releaseList(memory, list);
        releaseIndex(memory, index);
        for (IniNamed& record : records)
            releaseText(memory, record.name);
    }

    void append(const std::string& name) {
        ASSERT_LT(used, kMost);
        ASSERT_TRUE(copyText(memory, name, records[used].name));
        ASSERT_TRUE(reserveElement(memory, list, IniGrowth::proportional));
        appendElement(*list, &records[used++]);
    }
    std::uint32_t find(const std::string& name) {
        return findByName(memory, index, list, GetParam(), name);
    }
    std::uint32_t walk(const std::string& name) const { return walkByName(list, GetParam(), name); }

    static constexpr std::size_t kMost = 20000;
    TestMemory testMemory;
    const IniMemory memory = testMemory.memory();
    std::vector<IniNamed> records{kMost};
    std::size_t used = 0;
    IniList* list = nullptr;
    IniIndex* index = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Both, IniIndexTest, testing::Bool(), [](const auto& instance) {
    return instance.param ? "CaseSensitive" : "CaseInsensitive";
});

TEST_P(IniIndexTest, ShortListsHaveNone) {
    for (std::uint32_t n = 0; n < kLongestWalk; ++n) {
        append(numbered("key", n));
        EXPECT_EQ(find(numbered("key", n)), n + 1);
    }
    EXPECT_EQ(find("none"), 0U);
    EXPECT_EQ(index, nullptr);
    append("one more");
    EXPECT_EQ(find("one more"), kLongestWalk + 1);
    EXPECT_NE(index, nullptr);
}

// Names that differ in case and white space only, appended, removed and looked up in random order.
TEST_P(IniIndexTest, AnswersLikeAWalkThroughAllChanges) {
    const std::vector<std::string> before = {"", " ", "\t"};
    const std::vector<std::string> after = {"", " ", "\t", "  ", " \t"};
    const std::vector<std::string> middle = {"a",  "A",  "b",        "B",
                                             "ab", "aB", "abcdefgh", "aBCDEFGH"};
    std::mt19937 random(20240229);
    const auto pick = [&random](const std::vector<std::string>& from) {
        return from[random() % from.size()];
    };
    const auto name = [&] {
        return pick(before) + pick(middle) + std::to_string(random() % 30) + pick(after);
    };
    int found = 0;
    int missed = 0;
    for (int step = 0; step < 6000; ++step) {
        const unsigned action = static_cast<unsigned>(random() % 10);
        if (action < 3) {
            append(name());
        } else if (action == 3 && random() % 8 == 0 && countOf(list) > 0) {
            removeElement(*list, static_cast<std::uint32_t>(1 + random() % countOf(list)));
            invalidateIndex(index);
        }
        const std::string asked = name();
        const std::uint32_t answer = find(asked);
        ASSERT_EQ(answer, walk(asked)) << "step " << step << " name " << asked;
        (answer != 0 ? found : missed)++;
    }
    EXPECT_GT(found, 500);
    EXPECT_GT(missed, 100);
}

TEST_P(IniIndexTest, FollowsAppendedElements) {
    for (std::uint32_t n = 0; n < kMost; ++n) {
        append(numbered("key", n));
        if (n % 7 == 0) {
            ASSERT_EQ(find(numbered("key", n)), n + 1);
        }
    }
    for (std::uint32_t n = 0; n < kMost; ++n)
        ASSERT_EQ(find(numbered("key", n)), n + 1);
    EXPECT_EQ(find("key20000"), 0U);
    EXPECT_EQ(index->covered, kMost);
}

TEST_P(IniIndexTest, OneNameRepeatedTakesOneSlot) {
    for (std::size_t n = 0; n < kMost; ++n)
        append("same");
    EXPECT_EQ(find("same"), 1U);
    EXPECT_EQ(find("other"), 0U);
    EXPECT_EQ(index->used, 1U);
    EXPECT_LT(index->mask, 100U);
}

TEST_P(IniIndexTest, IsMadeAgainOnceWalkingHasCostAsMuch) {
    for (int n = 0; n < 100; ++n)
        append(numbered("key", n));
    EXPECT_EQ(find("key99"), 100U);
    EXPECT_EQ(index->covered, 100U);
    removeElement(*list, 100);
    invalidateIndex(index);
    EXPECT_EQ(find("key98"), 99U);
    EXPECT_EQ(index->covered, 0U);
    EXPECT_EQ(find("key98"), 99U);
    EXPECT_EQ(index->covered, 99U);
    EXPECT_EQ(find("key99"), 0U);
}

TEST_P(IniIndexTest, WithoutMemoryTheListIsWalked) {
    for (int n = 0; n < 200; ++n)
        append(numbered("key", n));
    testMemory.failAbove(64); // not even the first index fits
    EXPECT_EQ(find("key150"), 151U);
    EXPECT_EQ(index, nullptr);
    testMemory.failAbove(300); // it cannot grow to its full size
    EXPECT_EQ(find("key150"), 151U);
    EXPECT_EQ(find("key199"), 200U);
    EXPECT_EQ(find("none"), 0U);
    ASSERT_NE(index, nullptr);
    EXPECT_LT(index->covered, 200U);
    testMemory.failAbove(SIZE_MAX);
    EXPECT_EQ(find("key199"), 200U);
    EXPECT_EQ(index->covered, 200U);
}

} // namespace
