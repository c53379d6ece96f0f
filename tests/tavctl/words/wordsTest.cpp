// The pieces that sentences are put together from.
#include "tavctl/words/words.h"

#include <gtest/gtest.h>

namespace {

using namespace tavctl;

TEST(Words, ItemsAreSeparatedAndEnumerated) {
    EXPECT_EQ(separated({}, ", "), "");
    EXPECT_EQ(separated({"a"}, ", "), "a");
    EXPECT_EQ(separated({"a", "", "c"}, ", "), "a, , c");
    EXPECT_EQ(enumerated({}), "");
    EXPECT_EQ(enumerated({"a"}), "a");
    EXPECT_EQ(enumerated({"a", "b"}), "a and b");
    EXPECT_EQ(enumerated({"a", "b", "c"}), "a, b and c");
}

TEST(Words, NumbersHaveTheirNounAndTheirDigits) {
    EXPECT_EQ(counted(0, "label"), "0 labels");
    EXPECT_EQ(counted(1, "label"), "1 label");
    EXPECT_EQ(hexadecimal(0xAB, 4), "00AB");
    EXPECT_EQ(hexadecimal(0x12345, 4), "12345");
}

// What looks like a format is text like any other.
TEST(Words, QuotedTextIsCutByCharactersAndNeverAFormat) {
    EXPECT_EQ(tavctl::inQuotes("{} %s"), "\"{} %s\"");
    std::string fifty;
    for (int i = 0; i < 50; ++i)
        fifty += "\xC3\x84";
    EXPECT_EQ(tavctl::inQuotes(fifty), "\"" + fifty + "\"");
    EXPECT_EQ(tavctl::inQuotes(fifty + "x"), "\"" + fifty + "...\"");
}

} // namespace
