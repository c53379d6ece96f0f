// UTF-8 and wide characters.
#include "platform/text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace platform;

TEST(PlatformText, EveryLengthIsConvertedBothWays) {
    const std::vector<std::pair<std::string, std::wstring>> texts = {
        {"", L""},
        {"plain", L"plain"},
        {"\x7F\xC2\x80\xDF\xBF", L"\u007F\u0080\u07FF"},
        {"\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", L"\u0800\uD7FF\uE000\uFFFF"},
        {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", L"\U00010000\U0010FFFF"},
        {std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
    };
    for (const auto& [utf8, wide] : texts) {
        std::wstring toTheWide = L"old";
        EXPECT_EQ(toWide(utf8, toTheWide), Conversion::done);
        EXPECT_EQ(toTheWide, wide);
        std::string toTheNarrow = "old";
        EXPECT_EQ(toUtf8(wide, toTheNarrow), Conversion::done);
        EXPECT_EQ(toTheNarrow, utf8);
    }
}

TEST(PlatformText, InvalidUtf8IsRefusedAndTheResultStays) {
    for (const char* const text :
         {"\x80", "a\xBF", "\xC2", "\xC2(", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xE2\x82",
          "\xE2(\x82", "\xED\xA0\x80", "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF", "\xF0\x90\x80",
          "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFE", "\xFF"}) {
        std::wstring wide = L"old";
        EXPECT_EQ(toWide(text, wide), Conversion::invalidText) << text;
        EXPECT_EQ(wide, L"old");
    }
}

TEST(PlatformText, LoneSurrogatesAreRefusedAndTheResultStays) {
    for (const wchar_t character :
         {wchar_t{0xD800}, wchar_t{0xDBFF}, wchar_t{0xDC00}, wchar_t{0xDFFF}}) {
        std::string utf8 = "old";
        EXPECT_EQ(toUtf8(std::wstring(1, character), utf8), Conversion::invalidText);
        EXPECT_EQ(utf8, "old");
    }
}

} // namespace
