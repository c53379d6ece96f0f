#include "platform/text.h"

#include "platform/utf8.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>

namespace platform {

namespace {

static_assert(sizeof(wchar_t) == sizeof(char32_t), "one wide character holds any code point");

constexpr bool isCodePoint(char32_t value) noexcept {
    return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

// What the first byte of a sequence begins with, how many bytes follow it, and the smallest code
// point that needs as many.
struct SequenceForm {
    unsigned mark;
    unsigned followers;
    char32_t smallest;
};
constexpr SequenceForm kForms[] = {
    {0x00, 0, 0}, {0xC0, 1, 0x80}, {0xE0, 2, 0x800}, {0xF0, 3, 0x10000}};

void encode(char32_t value, std::string& text) {
    const SequenceForm* form = &kForms[0];
    for (const SequenceForm& longer : kForms)
        if (value >= longer.smallest)
            form = &longer;
    unsigned shift = form->followers * 6;
    text.push_back(static_cast<char>(form->mark | (value >> shift)));
    while (shift != 0) {
        shift -= 6;
        text.push_back(static_cast<char>(0x80U | ((value >> shift) & 0x3FU)));
    }
}

} // namespace

Conversion toWide(const std::string& utf8, std::wstring& result) {
    // Most texts are ASCII to their end, and each of its characters is a code point.
    const auto plainEnd = std::find_if(
        utf8.begin(), utf8.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
    std::wstring wide(utf8.begin(), plainEnd);
    std::string_view rest(plainEnd, utf8.end());
    while (!rest.empty()) {
        const std::optional<char32_t> value = takeCodePoint(rest);
        if (!value)
            return Conversion::invalidText;
        wide.push_back(static_cast<wchar_t>(*value));
    }
    result.swap(wide);
    return Conversion::done;
}

Conversion toUtf8(const std::wstring& wide, std::string& result) {
    std::string utf8;
    utf8.reserve(wide.size());
    for (const wchar_t character : wide) {
        const auto value = static_cast<char32_t>(character);
        if (!isCodePoint(value))
            return Conversion::invalidText;
        encode(value, utf8);
    }
    result.swap(utf8);
    return Conversion::done;
}

std::string readableText(const std::string& text) {
    return text;
}

std::string narrowCharacterSet() {
    return {};
}

} // namespace platform
