// The growable list, its header and its addressing.
#include "pxidrivertools/ini/iniList.h"

#include "tests/pxidrivertools/iniHelpers.h"

#include <cstring>

namespace {

using namespace ini;

class IniListTest : public testing::Test {
protected:
    void TearDown() override { releaseList(memory, list); }

    bool append(IniGrowth growth = IniGrowth::oneSlot) {
        if (countOf(list) == 50 || !reserveElement(memory, list, growth))
            return false;
        appendElement(*list, &records[countOf(list)]);
        return true;
    }

    TestMemory testMemory;
    const IniMemory memory = testMemory.memory();
    IniNamed records[50];
    IniList* list = nullptr;
};

TEST_F(IniListTest, HasMagicCapacityElementSizeAndCountInItsHeader) {
    append();
    append();
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(std::memcmp(list, "TSIL", 4), 0);
    const auto* const words = reinterpret_cast<const std::uint32_t*>(list);
    EXPECT_EQ(words[1], 2U);
    EXPECT_EQ(words[2], sizeof(void*));
    EXPECT_EQ(words[3], 2U);
    EXPECT_EQ(*reinterpret_cast<IniNamed**>(list + 1), &records[0]);
}

TEST_F(IniListTest, GrowsByExactlyOneSlotWhenFull) {
    for (std::uint32_t n = 1; n <= 20; ++n) {
        append();
        EXPECT_EQ(list->capacity, n);
        EXPECT_EQ(list->count, n);
    }
}

TEST_F(IniListTest, GrowsInProportionWhileLoadingAndGivesTheRestBack) {
    std::vector<std::uint32_t> capacities;
    for (int n = 0; n < 8; ++n) {
        append(IniGrowth::proportional);
        capacities.push_back(list->capacity);
    }
    EXPECT_EQ(capacities, (std::vector<std::uint32_t>{3, 3, 3, 7, 7, 7, 7, 15}));
    trimList(memory, list);
    EXPECT_EQ(list->capacity, 8U);
    EXPECT_EQ(list->count, 8U);
    truncateList(*list, 0);
    trimList(memory, list);
    EXPECT_EQ(list, nullptr);
}

TEST_F(IniListTest, CountsFromOneAndTakesZeroAndMinusOneForTheFirst) {
    EXPECT_EQ(elementAt(list, 1), nullptr);
    EXPECT_EQ(elementAt(list, 0), nullptr);
    append();
    append();
    append();
    EXPECT_EQ(elementAt(list, 1), &records[0]);
    EXPECT_EQ(elementAt(list, 0), &records[0]);
    EXPECT_EQ(elementAt(list, -1), &records[0]);
    EXPECT_EQ(elementAt(list, 3), &records[2]);
    EXPECT_EQ(elementAt(list, 4), nullptr);
    EXPECT_EQ(elementAt(list, -2), nullptr);
}

TEST_F(IniListTest, RemovingMovesTheRestUp) {
    append();
    append();
    append();
    removeElement(*list, 2);
    EXPECT_EQ(countOf(list), 2U);
    EXPECT_EQ(elementAt(list, 1), &records[0]);
    EXPECT_EQ(elementAt(list, 2), &records[2]);
    removeElement(*list, 2);
    removeElement(*list, 1);
    EXPECT_EQ(countOf(list), 0U);
}

TEST_F(IniListTest, StaysAsItWasWithoutMemory) {
    append();
    testMemory.failAt(1);
    EXPECT_FALSE(append());
    EXPECT_EQ(list->capacity, 1U);
    EXPECT_EQ(list->count, 1U);
    EXPECT_EQ(elementAt(list, 1), &records[0]);
}

} // namespace
