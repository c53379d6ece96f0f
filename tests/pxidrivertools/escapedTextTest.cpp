// How texts are stored.
#include "pxidrivertools/escapedText.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;

TEST(EscapedText, HasShortFormsForFourCharacters) {
    EXPECT_EQ(escapeText("a\tb\nc\"d\\e"), "a\\tb\\nc\\\"d\\\\e");
}

TEST(EscapedText, OtherControlCharactersAreHexadecimal) {
    EXPECT_EQ(escapeText(std::string_view("\0\x01\r\x1F\x7F", 5)), "\\x00\\x01\\x0d\\x1f\\x7f");
    for (int c = 0; c < 256; ++c) {
        const bool escaped = c < 32 || c == 127 || c == '"' || c == '\\';
        const std::string text(1, static_cast<char>(c));
        EXPECT_EQ(escapeText(text) != text, escaped) << c;
    }
}

TEST(EscapedText, EverythingElseStays) {
    EXPECT_EQ(escapeText(""), "");
    EXPECT_EQ(escapeText(" a'b/\xC3\xA4\x80\xFF~ "), " a'b/\xC3\xA4\x80\xFF~ ");
}

TEST(EscapedText, ComesBackByteForByte) {
    std::string all;
    for (int c = 0; c < 256; ++c) {
        const std::string text(1, static_cast<char>(c));
        EXPECT_EQ(unescapeText(escapeText(text)), text) << c;
        all += text;
    }
    EXPECT_EQ(unescapeText(escapeText(all)), all);
    EXPECT_EQ(unescapeText(escapeText(escapeText(all))), escapeText(all));
    EXPECT_EQ(unescapeText(""), "");
}

TEST(EscapedText, ComesBackWhateverItLooksLike) {
    // Texts of the characters that sequences are made of, among which are all short sequences.
    constexpr std::string_view kCharacters = "\\\"\n\x01tnx01aAf";
    std::minstd_rand random(1);
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % 12, ' ');
        for (char& c : text)
            c = kCharacters[random() % kCharacters.size()];
        ASSERT_EQ(unescapeText(escapeText(text)), text) << round;
    }
}

TEST(EscapedText, OnlySequencesThatAreWrittenAreRead) {
    EXPECT_EQ(unescapeText("a\\tb\\nc\\\"d\\\\e"), "a\tb\nc\"d\\e");
    EXPECT_EQ(unescapeText("\\x00\\x01\\x0d\\x1f\\x7f"), std::string("\0\x01\r\x1F\x7F", 5));
    for (const std::string text :
         {"\\",    "a\\",   "\\a",   "\\T",   "\\0",   "\\'",   "\\x",   "\\x0",
          "\\x1",  "\\x41", "\\x20", "\\x80", "\\xff", "\\x0A", "\\x1F", "\\X1f",
          "\\x7F", "\\x0g", "\\xg0", "\\x09", "\\x0a", "\\x22", "\\x5c"})
        EXPECT_EQ(unescapeText(text), text);
    // One that is none does not swallow the one behind it; digits behind one are digits.
    EXPECT_EQ(unescapeText("\\x\\x01"), "\\x\x01");
    EXPECT_EQ(unescapeText("\\q\\t"), "\\q\t");
    EXPECT_EQ(unescapeText("\\x071"), "\x07"
                                      "1");
    EXPECT_EQ(unescapeText("\\\\x07"), "\\x07");
    EXPECT_EQ(unescapeText("\\\\\\x07"), "\\\x07");
}

} // namespace
