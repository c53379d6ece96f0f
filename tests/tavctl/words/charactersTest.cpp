// Characters of UTF-8 texts.
#include "tavctl/words/characters.h"

#include <gtest/gtest.h>

namespace {

using namespace tavctl;

TEST(Characters, AreCountedNotBytes) {
    EXPECT_EQ(characterCount("B\xC3\xB6xes"), 5U);
    EXPECT_EQ(characterCount(""), 0U);
}

TEST(Characters, AreTakenWholeOffTheFront) {
    EXPECT_EQ(firstCharacters("\xC3\xB6\xE2\x82\xAC!", 2), "\xC3\xB6\xE2\x82\xAC");
    EXPECT_EQ(firstCharacters("ab", 0), "");
    EXPECT_EQ(firstCharacters("ab", 3), "ab");
}

TEST(Characters, BytesThatBelongToNoneGoWithTheOneBefore) {
    EXPECT_EQ(characterCount("a\x80\x80z"), 2U);
    EXPECT_EQ(firstCharacters("\x80z", 1), "\x80");
}

} // namespace
