// Lists in one value, and lists that are full.
#include "pxidrivertools/listText.h"

#include "pxidrivertools/listItems.h"
#include "pxidrivertools/tText.h"

#include <gtest/gtest.h>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;
using Items = std::list<std::string>;

TEST(ListText, SplitsAtEveryComma) {
    EXPECT_EQ(splitList("a,b,c"), (Items{"a", "b", "c"}));
    EXPECT_EQ(splitList("a"), Items{"a"});
    EXPECT_EQ(splitList(" a , b "), (Items{" a ", " b "}));
}

TEST(ListText, KeepsEmptyItemsButNoneBehindTheLastComma) {
    EXPECT_EQ(splitList("a,,b"), (Items{"a", "", "b"}));
    EXPECT_EQ(splitList(",a"), (Items{"", "a"}));
    EXPECT_EQ(splitList("a,"), Items{"a"});
    EXPECT_EQ(splitList("a,,"), (Items{"a", ""}));
    EXPECT_EQ(splitList(","), Items{""});
    EXPECT_EQ(splitList(""), Items{});
}

TEST(ListText, JoinsWithCommasAlone) {
    EXPECT_EQ(joinList(Items{}), "");
    EXPECT_EQ(joinList(Items{"a"}), "a");
    EXPECT_EQ(joinList(Items{"a", "", " b"}), "a,, b");
    EXPECT_EQ(joinList(Items{"", "a"}), ",a");
    EXPECT_EQ(joinList(std::list<std::int32_t>{}), "");
    EXPECT_EQ(joinList(std::list<std::int32_t>{1, -2, 2147483647}), "1,-2,2147483647");
}

// A list that holds three items at most.
struct ShortList : std::list<int> {
    using std::list<int>::list;
    static std::size_t max_size() { return 3; }
};

TEST(ListItems, AListBeyondItsMaximumIsTooLong) {
    ShortList list{1, 2};
    appendItem(list, 3);
    try {
        appendItem(list, 4);
        FAIL() << "nothing was raised";
    } catch (const std::length_error& error) {
        EXPECT_STREQ(error.what(), "list too long");
    }
    EXPECT_EQ(list, (ShortList{1, 2, 3}));
}

TEST(ListItems, SoAreManyItemsAtOnce) {
    ShortList list{1};
    ShortList more{2, 3};
    appendItems(list, more);
    EXPECT_EQ(list, (ShortList{1, 2, 3}));
    EXPECT_TRUE(more.empty());
    more = {4};
    EXPECT_THROW(appendItems(list, more), std::length_error);
    EXPECT_EQ(list, (ShortList{1, 2, 3}));
    EXPECT_EQ(more, (ShortList{4}));
}

TEST(Text, SharesItsContentAmongCopies) {
    const tText empty;
    EXPECT_STREQ(empty.text(), "");
    EXPECT_EQ(empty.size(), 0U);
    tText copy;
    {
        const tText text(std::string_view("a\0b", 3));
        copy = text;
        EXPECT_EQ(copy.text(), text.text());
    }
    EXPECT_EQ(copy.view(), std::string_view("a\0b", 3));
    EXPECT_EQ(copy.text()[3], '\0');
    EXPECT_STREQ(tText("").text(), "");
}

} // namespace
