// File names against patterns.
#include "platform/namePattern.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using platform::matchesNamePattern;

TEST(NamePattern, StarStandsForAnyNumberOfCharacters) {
    EXPECT_TRUE(matchesNamePattern("box.ini", "*.ini"));
    EXPECT_TRUE(matchesNamePattern("a.ini.ini", "*.ini"));
    EXPECT_TRUE(matchesNamePattern("abcbcd", "a*bcd"));
    EXPECT_TRUE(matchesNamePattern("aXbYc", "a*b*c"));
    EXPECT_TRUE(matchesNamePattern("x", "***"));
    EXPECT_TRUE(matchesNamePattern("x", "x*"));
    EXPECT_FALSE(matchesNamePattern("box.ini.bak", "*.ini"));
    EXPECT_FALSE(matchesNamePattern("box.in", "*.ini"));
    EXPECT_FALSE(matchesNamePattern("aXbY", "a*b*c"));
}

TEST(NamePattern, QuestionMarkStandsForOneCharacterHoweverManyBytes) {
    EXPECT_TRUE(matchesNamePattern("a1", "a?"));
    EXPECT_TRUE(matchesNamePattern("a\xC3\xA4", "a?"));
    EXPECT_TRUE(matchesNamePattern("a\xE2\x82\xAC.ini", "*?.ini"));
    EXPECT_TRUE(matchesNamePattern("a\xFF", "a?"));
    EXPECT_FALSE(matchesNamePattern("a", "a?"));
    EXPECT_FALSE(matchesNamePattern("a\xC3\xA4", "a??"));
}

TEST(NamePattern, CaseCounts) {
    EXPECT_FALSE(matchesNamePattern("box.INI", "*.ini"));
}

TEST(NamePattern, LeadingDotMustBeWrittenOut) {
    EXPECT_FALSE(matchesNamePattern(".ini", "*.ini"));
    EXPECT_FALSE(matchesNamePattern(".x.ini", "?x.ini"));
    EXPECT_TRUE(matchesNamePattern(".x.ini", ".*.ini"));
}

TEST(NamePattern, BracketsAndBackslashesStandForThemselves) {
    EXPECT_TRUE(matchesNamePattern("[ab].ini", "[ab].ini"));
    EXPECT_FALSE(matchesNamePattern("a.ini", "[ab].ini"));
    EXPECT_TRUE(matchesNamePattern("a\\x", "a\\*"));
}

TEST(NamePattern, EmptyPatternMatchesNoName) {
    EXPECT_FALSE(matchesNamePattern("x", ""));
    EXPECT_TRUE(matchesNamePattern("", ""));
}

TEST(NamePattern, ManyStarsDoNotMultiplyTheWork) {
    std::string pattern;
    for (int i = 0; i < 60; ++i)
        pattern += "*a";
    EXPECT_FALSE(matchesNamePattern(std::string(250, 'a') + "b", pattern + "c"));
    EXPECT_TRUE(matchesNamePattern(std::string(250, 'a'), pattern));
}

} // namespace
