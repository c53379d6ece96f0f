#include "platform/utf8.h"

#include <cstddef>

namespace platform {

namespace {

// How a first byte announces the length of its sequence: the bits that say so, what they must be,
// and the smallest code point that needs that length.
struct SequenceForm {
    unsigned mask;
    unsigned mark;
    std::size_t length;
    char32_t smallest;
};
constexpr SequenceForm kForms[] = {
    {0x80, 0x00, 1, 0},
    {0xE0, 0xC0, 2, 0x80},
    {0xF0, 0xE0, 3, 0x800},
    {0xF8, 0xF0, 4, 0x10000},
};

constexpr unsigned kFollowerMask = 0xC0;
constexpr unsigned kFollowerMark = 0x80;
constexpr unsigned kFollowerBits = 6;
constexpr char32_t kLastCodePoint = 0x10FFFF;

constexpr bool isCodePoint(char32_t value) noexcept {
    return value <= kLastCodePoint && (value < 0xD800 || value > 0xDFFF);
}

std::optional<char32_t> decode(std::string_view text, const SequenceForm& form) noexcept {
    if (text.size() < form.length)
        return std::nullopt;
    char32_t value = static_cast<unsigned char>(text.front()) & ~form.mask;
    for (const char follower : text.substr(1, form.length - 1)) {
        const unsigned byte = static_cast<unsigned char>(follower);
        if ((byte & kFollowerMask) != kFollowerMark)
            return std::nullopt;
        value = value << kFollowerBits | (byte & ~kFollowerMask);
    }
    if (value < form.smallest || !isCodePoint(value))
        return std::nullopt;
    return value;
}

} // namespace

std::optional<char32_t> takeCodePoint(std::string_view& text) noexcept {
    for (const SequenceForm& form : kForms) {
        if ((static_cast<unsigned char>(text.front()) & form.mask) != form.mark)
            continue;
        const std::optional<char32_t> value = decode(text, form);
        if (value)
            text.remove_prefix(form.length);
        return value;
    }
    return std::nullopt;
}

bool isValidUtf8(std::string_view text) noexcept {
    while (!text.empty()) {
        if (!takeCodePoint(text))
            return false;
    }
    return true;
}

} // namespace platform
