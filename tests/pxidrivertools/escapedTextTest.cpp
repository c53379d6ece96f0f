// How texts are stored.
#include "pxidrivertools/escapedText.h"

#include <gtest/gtest.h>

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

} // namespace
