#include "platform/text.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace platform {

namespace {

static_assert(sizeof(wchar_t) == sizeof(char32_t), "one wide character holds any code point");

constexpr char32_t kLastCodePoint = 0x10FFFF;

constexpr bool isCodePoint(char32_t value) noexcept {
    return value <= kLastCodePoint && (value < 0xD800 || value > 0xDFFF);
}

// How a first byte announces the length of its sequence: the bits that say so, the bits that count,
// and the smallest code point that needs that length.
struct SequenceForm {
    unsigned char mask;
    unsigned char mark;
    std::size_t length;
    char32_t smallest;
};
constexpr SequenceForm kForms[] = {
    {0x80, 0x00, 1, 0},
    {0xE0, 0xC0, 2, 0x80},
    {0xF0, 0xE0, 3, 0x800},
    {0xF8, 0xF0, 4, 0x10000},
};

// Takes one code point off the front.
std::optional<char32_t> decode(std::string_view& text) noexcept {
    const auto first = static_cast<unsigned char>(text.front());
    for (const SequenceForm& form : kForms) {
        if ((first & form.mask) != form.mark)
            continue;
        if (text.size() < form.length)
            return std::nullopt;
        char32_t value = first & static_cast<unsigned char>(~form.mask);
        for (const char next : text.substr(1, form.length - 1)) {
            const auto byte = static_cast<unsigned char>(next);
            if ((byte & 0xC0U) != 0x80)
                return std::nullopt;
            value = (value << 6) | (byte & 0x3FU);
        }
        if (value < form.smallest || !isCodePoint(value))
            return std::nullopt;
        text.remove_prefix(form.length);
        return value;
    }
    return std::nullopt;
}

void encode(char32_t value, std::string& text) {
    const SequenceForm* form = &kForms[0];
    for (const SequenceForm& longer : kForms)
        if (value >= longer.smallest)
            form = &longer;
    std::size_t shift = (form->length - 1) * 6;
    text.push_back(static_cast<char>(form->mark | (value >> shift)));
    while (shift != 0) {
        shift -= 6;
        text.push_back(static_cast<char>(0x80U | ((value >> shift) & 0x3FU)));
    }
}

} // namespace

Conversion toWide(const std::string& utf8, std::wstring& result) {
    std::wstring wide;
    wide.reserve(utf8.size());
    std::string_view rest = utf8;
    while (!rest.empty()) {
        const std::optional<char32_t> value = decode(rest);
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

} // namespace platform
