#include "tavctl/words/printable.h"

#include "platform/utf8.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <optional>

namespace tavctl {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

// Unicode's categories Cc, Cf, Zl and Zp and its noncharacters in the first plane; ascending.
constexpr Range kUnprintable[] = {
    {0x0000, 0x001F},   {0x007F, 0x009F},   {0x00AD, 0x00AD},   {0x0600, 0x0605},
    {0x061C, 0x061C},   {0x06DD, 0x06DD},   {0x070F, 0x070F},   {0x0890, 0x0891},
    {0x08E2, 0x08E2},   {0x180E, 0x180E},   {0x200B, 0x200F},   {0x2028, 0x202E},
    {0x2060, 0x206F},   {0xFDD0, 0xFDEF},   {0xFEFF, 0xFEFF},   {0xFFF9, 0xFFFB},
    {0x110BD, 0x110BD}, {0x110CD, 0x110CD}, {0x13430, 0x1343F}, {0x1BCA0, 0x1BCA3},
    {0x1D173, 0x1D17A}, {0xE0001, 0xE0001}, {0xE0020, 0xE007F},
};

constexpr char32_t kByteLimit = 0x100;

// The length of a sequence that sets colours at the front of a text; 0 when there is none.
std::size_t colourLength(std::string_view text) {
    constexpr std::string_view kStart = "\033[";
    if (!text.starts_with(kStart))
        return 0;
    const std::size_t end = text.find_first_not_of("0123456789;", kStart.size());
    return end != std::string_view::npos && text[end] == 'm' ? end + 1 : 0;
}

template <typename Stays>
std::string escaped(std::string_view text, Stays stays) {
    std::string result;
    result.reserve(text.size());
    const auto out = std::back_inserter(result);
    while (!text.empty()) {
        if (const std::size_t length = stays(text); length != 0) {
            result += text.substr(0, length);
            text.remove_prefix(length);
            continue;
        }
        const std::string_view before = text;
        const std::optional<char32_t> character = platform::takeCodePoint(text);
        if (!character) {
            fmt::format_to(out, "\\x{:02X}", static_cast<unsigned char>(text.front()));
            text.remove_prefix(1);
        } else if (!isUnprintable(*character)) {
            result += before.substr(0, before.size() - text.size());
        } else if (*character < kByteLimit) {
            fmt::format_to(out, "\\x{:02X}", static_cast<unsigned>(*character));
        } else {
            fmt::format_to(out, "\\u{:04X}", static_cast<unsigned>(*character));
        }
    }
    return result;
}

} // namespace

bool isUnprintable(char32_t character) noexcept {
    const auto* const range =
        std::lower_bound(std::begin(kUnprintable), std::end(kUnprintable), character,
                         [](const Range& each, char32_t sought) { return each.last < sought; });
    if (range != std::end(kUnprintable) && range->first <= character)
        return true;
    return (character & 0xFFFEU) == 0xFFFEU; // the last two of every plane are no characters
}

std::string printable(std::string_view text) {
    return escaped(text, [](std::string_view) { return std::size_t{0}; });
}

std::string printableLines(std::string_view text, bool colours) {
    return escaped(text, [colours](std::string_view rest) -> std::size_t {
        if (rest.front() == '\n' || rest.front() == '\t')
            return 1;
        return colours ? colourLength(rest) : 0;
    });
}

} // namespace tavctl
