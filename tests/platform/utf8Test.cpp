// UTF-8 by the letter, at the borders of every sequence length.
#include "platform/utf8.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

namespace {

using platform::isValidUtf8;
using platform::takeCodePoint;

TEST(Utf8, EmptyTextIsValid) {
    EXPECT_TRUE(isValidUtf8(""));
}

TEST(Utf8, TakesTheFirstAndLastCodePointOfEachLength) {
    struct Case {
        std::string_view bytes;
        char32_t value;
    };
    using namespace std::string_view_literals;
    for (const Case& sample : {
             Case{"\x00"sv, 0},
             Case{"\x7F", 0x7F},
             Case{"\xC2\x80", 0x80},
             Case{"\xDF\xBF", 0x7FF},
             Case{"\xE0\xA0\x80", 0x800},
             Case{"\xED\x9F\xBF", 0xD7FF},
             Case{"\xEE\x80\x80", 0xE000},
             Case{"\xEF\xBF\xBF", 0xFFFF},
             Case{"\xF0\x90\x80\x80", 0x10000},
             Case{"\xF4\x8F\xBF\xBF", 0x10FFFF},
         }) {
        const std::string text = std::string(sample.bytes) + "z";
        std::string_view rest = text;
        EXPECT_EQ(takeCodePoint(rest), std::optional(sample.value));
        EXPECT_EQ(rest, "z");
    }
}

TEST(Utf8, RefusesWhatIsNoSequenceAndLeavesItInPlace) {
    for (const std::string_view bytes : {
             "\x80", "\xBF",                                           // followers alone
             "\xC0\x80", "\xC1\xBF",                                   // longer than needed
             "\xE0\x9F\xBF",                                           //
             "\xF0\x8F\xBF\xBF",                                       //
             "\xED\xA0\x80", "\xED\xBF\xBF",                           // surrogates
             "\xF4\x90\x80\x80",                                       // beyond the last code point
             "\xF8\x88\x80\x80\x80", "\xFF",                           // no first byte
             "\xC2", "\xE0\xA0", "\xF0\x90\x80", "\xC2z", "\xE0\xA0z", // cut
         }) {
        std::string_view rest = bytes;
        EXPECT_EQ(takeCodePoint(rest), std::nullopt);
        EXPECT_EQ(rest, bytes);
        EXPECT_FALSE(isValidUtf8(bytes));
        EXPECT_FALSE(isValidUtf8(std::string("ok") + std::string(bytes)));
    }
}

TEST(Utf8, MixedTextIsValid) {
    EXPECT_TRUE(isValidUtf8("a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z"));
}

} // namespace
