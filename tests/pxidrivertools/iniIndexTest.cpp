// The hash index gives the answers of a walk from the front, in every state.
#include "pxidrivertools/ini/iniIndex.h"

#include "tests/pxidrivertools/iniHelpers.h"

#include <algorithm>
#include <random>

namespace {

using namespace ini;

class IniIndexTest : public testing::TestWithParam<bool> {
protected:
    void TearDown() override {
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

// Names that differ in case and white space only, appended, renamed, removed (often near an end)
// and looked up in random order; among few names, of which many hide others, and among many.
TEST_P(IniIndexTest, AnswersLikeAWalkThroughAllChanges) {
    const std::vector<std::string> before = {"", " ", "\t"};
    const std::vector<std::string> after = {"", "", "", " ", "\t", "  ", " \t"};
    const std::vector<std::string> middle = {"a",  "A",  "b",        "B",
                                             "ab", "aB", "abcdefgh", "aBCDEFGH"};
    std::mt19937 random(20240229);
    const auto below = [&random](std::size_t bound) {
        return static_cast<std::uint32_t>(random() % bound);
    };
    for (const std::size_t names : {std::size_t{30}, std::size_t{100000}}) {
        releaseList(memory, list);
        releaseIndex(memory, index);
        // One after the other, so that every compiler draws the same names.
        const auto name = [&] {
            std::string text = before[below(before.size())];
            text += middle[below(middle.size())];
            text += std::to_string(below(names));
            text += after[below(after.size())];
            return text;
        };
        const auto element = [&]() -> std::uint32_t {
            const std::uint32_t count = countOf(list);
            const std::uint32_t near = 1 + below(std::min(count, 5U));
            const std::uint32_t way = below(3);
            return way == 0 ? near : way == 1 ? count + 1 - near : 1 + below(count);
        };
        int found = 0;
        int missed = 0;
        int kept = 0;
        for (int step = 0; step < 9000; ++step) {
            const unsigned action = below(12);
            if (action < 5) {
                append(name());
            } else if (action == 5 && countOf(list) > 0) {
                const std::uint32_t leaving = element();
                elementLeaves(index, list, GetParam(), leaving);
                removeElement(*list, leaving);
                kept += index != nullptr && index->covered != 0;
            } else if (action == 6 && countOf(list) > 0) {
                const std::uint32_t changing = element();
                IniNamed& record = *elementsOf(list)[changing - 1];
                nameLeaves(index, list, GetParam(), changing);
                releaseText(memory, record.name);
                ASSERT_TRUE(copyText(memory, name(), record.name));
                nameArrives(index, list, GetParam(), changing);
            }
            const std::string asked =
                countOf(list) > 0 && below(2) == 0
                    ? std::string(
                          elementAt(list, static_cast<std::int32_t>(element()))->name.view())
                    : name();
            const std::uint32_t answer = find(asked);
            ASSERT_EQ(answer, walk(asked)) << "step " << step << " name " << asked;
            (answer != 0 ? found : missed)++;
        }
        EXPECT_GT(found, 1000);
        EXPECT_GT(missed, 50);
        EXPECT_GT(kept, names == 30 ? 0 : 100) << "removals that the index followed";
    }
}

TEST_P(IniIndexTest, RemovingAtEitherEndAndInTheMiddleNeedsNoNewIndex) {
    for (int n = 0; n < 3000; ++n)
        append(numbered("key", n));
    std::vector<std::string> names;
    for (int n = 0; n < 3000; ++n)
        names.push_back(numbered("key", n));
    ASSERT_EQ(find("key0"), 1U);
    for (const std::size_t place : {0U, 1U, 2997U, 2990U, 1500U, 100U, 2900U, 400U, 0U}) {
        const auto element = static_cast<std::uint32_t>(place + 1);
        elementLeaves(index, list, GetParam(), element);
        removeElement(*list, element);
        EXPECT_EQ(find(names[place]), 0U);
        names.erase(names.begin() + static_cast<std::ptrdiff_t>(place));
        ASSERT_EQ(index->covered, names.size());
        for (std::size_t n = 0; n < names.size(); ++n)
            ASSERT_EQ(find(names[n]), n + 1) << place;
    }
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
    testMemory.failAbove(600); // it cannot grow to its full size
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
