// Where lines end, and what a line is.
#include "pxidrivertools/ini/iniLines.h"

#include "tests/pxidrivertools/iniHelpers.h"

#include <algorithm>
#include <random>

namespace {

using namespace ini;
using Lines = std::vector<std::string>;

Lines split(std::string text, bool completeOnly = false) {
    const IniBlock block{text.data(), text.size()};
    IniLineCursor cursor(block, completeOnly);
    Lines lines;
    std::string_view line;
    while (cursor.next(line)) {
        lines.emplace_back(line);
        EXPECT_EQ(cursor.number(), static_cast<int>(lines.size()));
    }
    EXPECT_FALSE(cursor.next(line));
    return lines;
}

TEST(IniLines, CarriageReturnLineFeedAndNulEachEndALine) {
    EXPECT_EQ(split(std::string("a\nb\rc\0d", 7)), (Lines{"a", "b", "c", "d"}));
}

TEST(IniLines, TwoDifferentTerminatorsInARowAreOneLineEnd) {
    EXPECT_EQ(split("a\r\nb\n\rc\r\n"), (Lines{"a", "b", "c"}));
    EXPECT_EQ(split(std::string("a\0\nb\r\0c", 7)), (Lines{"a", "b", "c"}));
}

TEST(IniLines, TwoEqualTerminatorsInARowMakeAnEmptyLine) {
    EXPECT_EQ(split("a\n\nb"), (Lines{"a", "", "b"}));
    EXPECT_EQ(split("a\r\rb"), (Lines{"a", "", "b"}));
    EXPECT_EQ(split(std::string("a\0\0b", 4)), (Lines{"a", "", "b"}));
}

TEST(IniLines, TerminatorsGoInPairs) {
    EXPECT_EQ(split("a\r\n\r\nb"), (Lines{"a", "", "b"}));
    EXPECT_EQ(split("a\r\n\rb"), (Lines{"a", "", "b"}));
    EXPECT_EQ(split("a\n\r\r\nb"), (Lines{"a", "", "b"}));
    EXPECT_EQ(split("a\n\n\rb"), (Lines{"a", "", "b"}));
    EXPECT_EQ(split(std::string("a\r\n\0b", 5)), (Lines{"a", "", "b"}));
}

TEST(IniLines, NothingBehindTheLastLineEndIsNoLine) {
    EXPECT_EQ(split(""), Lines{});
    EXPECT_EQ(split("\n"), Lines{""});
    EXPECT_EQ(split("a"), Lines{"a"});
    EXPECT_EQ(split("a\r\n"), Lines{"a"});
}

TEST(IniLines, AnUnfinishedLineIsLeftOutOnRequest) {
    EXPECT_EQ(split("a\nb", true), Lines{"a"});
    EXPECT_EQ(split("a\nb\r", true), (Lines{"a", "b"}));
    EXPECT_EQ(split("b", true), Lines{});
    EXPECT_EQ(split("", true), Lines{});
}

// Whatever stands before, between and behind, at every distance from the start of the memory.
TEST(IniLines, AreFoundWhereverTheyEnd) {
    const std::string letters = {'\0', '\n', '\r', '=', '\t', '\v', 'a', 'b', '\x80', '\xFF'};
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        const std::size_t length = random() % 70;
        const std::size_t kinds = round % 3 == 0 ? 10 : 7; // few line ends, or many
        while (text.size() < length)
            text += letters[letters.size() - 1 - (random() % 4 == 0 ? random() % kinds : 0)];
        const char* const bound = text.data() + text.size();
        for (const char* start = text.data(); start != bound; ++start) {
            const char* end = start;
            while (!endsLine(*end))
                ++end;
            const char* equals = std::find(start, end, '=');
            const IniLineScan scan = scanLine(start, bound);
            ASSERT_EQ(scan.end - start, end - start);
            ASSERT_EQ(scan.equals, equals == end ? nullptr : equals);
        }
    }
}

// One letter for the kind, then name and value.
std::string what(std::string_view line, const IniParseOptions& options = {}) {
    const IniLine result = classifyLine(options, line);
    switch (result.kind) {
    case IniLineKind::comment:
        return "comment";
    case IniLineKind::odd:
        return "odd";
    case IniLineKind::header:
        return std::string("[").append(result.name) + "]";
    case IniLineKind::key:
        return std::string(result.name) + "|" + std::string(result.value);
    }
    return "?";
}

TEST(IniLineKinds, AnythingAfterASemicolonAtTheStartIsAComment) {
    EXPECT_EQ(what(";a=b"), "comment");
    EXPECT_EQ(what(" \t\v\f;"), "comment");
    EXPECT_EQ(what("a=b ;c"), "a|b ;c");
    EXPECT_EQ(what("#a=b"), "#a|b");
}

TEST(IniLineKinds, AHeaderIsNamedByTheTrimmedTextBetweenBrackets) {
    EXPECT_EQ(what("[a]"), "[a]");
    EXPECT_EQ(what("  [ \ta b\t ] rest = x"), "[a b]");
    EXPECT_EQ(what("[a]]"), "[a]");
    EXPECT_EQ(what("[a]b]"), "[a]");
    EXPECT_EQ(what("[[a]"), "[[a]");
    EXPECT_EQ(what("[;a=b]"), "[;a=b]");
}

TEST(IniLineKinds, AHeaderWithoutNameOrClosingBracketIsOdd) {
    EXPECT_EQ(what("[]"), "odd");
    EXPECT_EQ(what("[ \t]"), "odd");
    EXPECT_EQ(what("[] x]"), "odd");
    EXPECT_EQ(what("[a"), "odd");
    EXPECT_EQ(what("[a=b"), "odd");
}

TEST(IniLineKinds, AKeyEndsAtTheFirstEqualsSign) {
    EXPECT_EQ(what("a=b"), "a|b");
    EXPECT_EQ(what(" \ta b \t= \tc = d \t"), "a b|c = d");
    EXPECT_EQ(what("a==b"), "a|=b");
    EXPECT_EQ(what("a:b=c"), "a:b|c");
    EXPECT_EQ(what("a]=b"), "a]|b");
    EXPECT_EQ(what("a=\"b\""), "a|\"b\"");
    EXPECT_EQ(what("\xE4=\xA0"), "\xE4|\xA0");
}

TEST(IniLineKinds, WithTheColonOptionAColonSeparatesToo) {
    const IniParseOptions options{.colonAndUnnamedSection = true};
    EXPECT_EQ(what("a:b", options), "a|b");
    EXPECT_EQ(what("a:b=c", options), "a|b=c");
    EXPECT_EQ(what("a=b:c", options), "a|b:c");
    EXPECT_EQ(what("a := b", options), "a|b");
    EXPECT_EQ(what("a:==b", options), "a|=b");
    EXPECT_EQ(what("a: =b", options), "a|=b");
    EXPECT_EQ(what("a=:b", options), "a|:b");
    EXPECT_EQ(what(":=b", options), "odd");
    EXPECT_EQ(what("a:=", options), "odd");
    EXPECT_EQ(what("a:", options), "odd");
    EXPECT_EQ(what("a:b"), "odd");
    EXPECT_EQ(what("a:=b"), "a:|b");
}

TEST(IniLineKinds, AnEmptyValueMakesAKeyOnRequestOnly) {
    EXPECT_EQ(what("a="), "odd");
    EXPECT_EQ(what("a= \t"), "odd");
    EXPECT_EQ(what("a=\"\""), "a|\"\"");
    const IniParseOptions options{.emptyValues = true};
    EXPECT_EQ(what("a=", options), "a|");
    EXPECT_EQ(what("a= \t", options), "a|");
    EXPECT_EQ(what("=b", options), "odd");
    EXPECT_EQ(what("  =", options), "odd");
}

TEST(IniLineKinds, LinesWithoutNameOrSeparatorAreOdd) {
    EXPECT_EQ(what(""), "odd");
    EXPECT_EQ(what(" \t\v\f"), "odd");
    EXPECT_EQ(what("a"), "odd");
    EXPECT_EQ(what("=b"), "odd");
    EXPECT_EQ(what(" \t=b"), "odd");
}

std::string strip(std::string_view value, bool doubleQuotes, bool singleQuotes) {
    const IniParseOptions options{.doubleQuotes = doubleQuotes, .singleQuotes = singleQuotes};
    const int quote = static_cast<unsigned char>(stripQuotes(options, value));
    return std::to_string(quote) + "|" + std::string(value);
}

TEST(IniQuotes, AreStrippedFromBothEndsByKind) {
    EXPECT_EQ(strip("\"a\"", true, false), "34|a");
    EXPECT_EQ(strip("\"a\"", false, false), "0|\"a\"");
    EXPECT_EQ(strip("\"a\"", false, true), "0|\"a\"");
    EXPECT_EQ(strip("'a'", true, false), "0|'a'");
    EXPECT_EQ(strip("'a'", false, true), "39|a");
    EXPECT_EQ(strip("'a'", true, true), "39|a");
    EXPECT_EQ(strip("\"a'", true, true), "0|\"a'");
}

TEST(IniQuotes, TakeTwoCharactersAndOneLayer) {
    EXPECT_EQ(strip("\"", true, true), "0|\"");
    EXPECT_EQ(strip("", true, true), "0|");
    EXPECT_EQ(strip("\"\"", true, false), "34|");
    EXPECT_EQ(strip("\"'a'\"", true, true), "34|'a'");
    EXPECT_EQ(strip("\" a \"", true, false), "34| a ");
    EXPECT_EQ(strip("\"a\" \"b\"", true, false), "34|a\" \"b");
    EXPECT_EQ(strip("\"a\"b", true, false), "0|\"a\"b");
}

} // namespace
