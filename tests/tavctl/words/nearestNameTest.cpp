// Which word was meant.
#include "tavctl/words/nearestName.h"

#include <gtest/gtest.h>

namespace {

using namespace tavctl;

TEST(NearestName, CountsInsertedDeletedReplacedAndSwappedLetters) {
    EXPECT_EQ(editDistance("tree", "tree"), 0U);
    EXPECT_EQ(editDistance("Tree", "tREE"), 0U);
    EXPECT_EQ(editDistance("tee", "tree"), 1U);
    EXPECT_EQ(editDistance("treee", "tree"), 1U);
    EXPECT_EQ(editDistance("trxe", "tree"), 1U);
    EXPECT_EQ(editDistance("rtee", "tree"), 1U);
    EXPECT_EQ(editDistance("", "tree"), 4U);
    EXPECT_EQ(editDistance("tree", ""), 4U);
}

TEST(NearestName, IsTheFirstOfTheNearest) {
    EXPECT_EQ(nearestName("lst", {"tree", "list", "lint"}), "list");
    EXPECT_EQ(nearestName("lin", {"list", "lint"}), "lint");
    EXPECT_EQ(nearestName("lixt", {"lint", "list"}), "lint");
}

TEST(NearestName, IsNoneWhenNothingIsNear) {
    EXPECT_EQ(nearestName("frobnicate", {"list", "tree"}), "");
    EXPECT_EQ(nearestName("", {"a"}), "");
    EXPECT_EQ(nearestName("x", {"y"}), "");
    EXPECT_EQ(nearestName("list", {}), "");
}

} // namespace
