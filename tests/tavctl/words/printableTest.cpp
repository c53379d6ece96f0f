#include "tavctl/words/printable.h"

#include <gtest/gtest.h>

namespace {

using tavctl::isUnprintable;
using tavctl::printable;
using tavctl::printableLines;

TEST(Printable, OrdinaryTextStays) {
    EXPECT_EQ(printable("TAV-B3 \"Box\" \\ \xC3\xB6 \xF0\x9F\x94\x8C"),
              "TAV-B3 \"Box\" \\ \xC3\xB6 \xF0\x9F\x94\x8C");
    EXPECT_EQ(printable(""), "");
}

TEST(Printable, ControlCharactersAreShownByNumber) {
    EXPECT_EQ(printable("a\033[2Jb\a\r\n\t\x7F"), "a\\x1B[2Jb\\x07\\x0D\\x0A\\x09\\x7F");
    EXPECT_EQ(printable(std::string_view("\0", 1)), "\\x00");
    EXPECT_EQ(printable("\xC2\x9B"), "\\x9B") << "a control sequence in one character";
    EXPECT_EQ(printable("\xC2\x85"), "\\x85");
}

TEST(Printable, CharactersThatMoveOthersOrHideAreShownByNumber) {
    EXPECT_EQ(printable("\xE2\x80\xAEgnp.exe"), "\\u202Egnp.exe");
    EXPECT_EQ(printable("\xE2\x81\xA6\xE2\x81\xA9"), "\\u2066\\u2069");
    EXPECT_EQ(printable("a\xE2\x80\x8B\xEF\xBB\xBF\xC2\xAD"), "a\\u200B\\uFEFF\\xAD");
    EXPECT_EQ(printable("\xE2\x80\xA8\xE2\x80\xA9"), "\\u2028\\u2029");
    EXPECT_EQ(printable("\xF3\xA0\x81\x81"), "\\uE0041");
    EXPECT_EQ(printable("\xEF\xBF\xBE\xF0\x9F\xBF\xBF"), "\\uFFFE\\u1FFFF");
}

TEST(Printable, BytesThatAreNotUtf8AreShownByNumber) {
    EXPECT_EQ(printable("a\xFF\xC3"), "a\\xFF\\xC3");
    EXPECT_EQ(printable("\xC0\x80"), "\\xC0\\x80") << "too long a form";
    EXPECT_EQ(printable("\xED\xA0\x80"), "\\xED\\xA0\\x80") << "half of a pair";
}

TEST(Printable, BordersOfTheRanges) {
    for (const char32_t inside : {0x00U, 0x1FU, 0x7FU, 0x9FU, 0x200BU, 0x200FU, 0x2028U, 0x202EU,
                                  0x2060U, 0x206FU, 0xFDD0U, 0xFDEFU, 0xFFFEU, 0x10FFFFU})
        EXPECT_TRUE(isUnprintable(inside)) << std::hex << static_cast<unsigned>(inside);
    for (const char32_t outside : {0x20U, 0x7EU, 0xA0U, 0x200AU, 0x2010U, 0x2027U, 0x202FU, 0x205FU,
                                   0x2070U, 0xFDCFU, 0xFDF0U, 0xFFFCU, 0xFFFDU, 0x10FFFDU})
        EXPECT_FALSE(isUnprintable(outside)) << std::hex << static_cast<unsigned>(outside);
}

TEST(PrintableLines, KeepLineFeedsTabulatorsAndColoursOnDemand) {
    EXPECT_EQ(printableLines("a\n\tb\r\n"), "a\n\tb\\x0D\n");
    EXPECT_EQ(printableLines("\033[1;32mgreen\033[0m", true), "\033[1;32mgreen\033[0m");
    EXPECT_EQ(printableLines("\033[1;32mgreen", false), "\\x1B[1;32mgreen");
    EXPECT_EQ(printableLines("\033[2J\033[1;32\033", true), "\\x1B[2J\\x1B[1;32\\x1B");
}

} // namespace
