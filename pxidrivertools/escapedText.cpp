#include "pxidrivertools/escapedText.h"

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

constexpr std::string_view kDigits = "0123456789abcdef";

constexpr bool isControl(char c) noexcept {
    return (c >= 0 && c < ' ') || c == 127;
}

void appendEscaped(std::string& result, char c) {
    switch (c) {
    case '\t':
        result += "\\t";
        return;
    case '\n':
        result += "\\n";
        return;
    case '"':
    case '\\':
        result += '\\';
        result += c;
        return;
    default:
        break;
    }
    if (!isControl(c)) {
        result += c;
        return;
    }
    const auto code = static_cast<unsigned char>(c);
    result += "\\x";
    result += kDigits[code >> 4U];
    result += kDigits[code & 0xFU];
}

// How many characters the sequence has that the text begins with, and what it stands for; 0, and
// `meant` left alone, where it is none.
std::size_t readSequence(std::string_view text, char& meant) noexcept {
    constexpr std::size_t kShort = 2;
    constexpr std::size_t kHexadecimal = 4;
    if (text.size() < kShort || text[0] != '\\')
        return 0;
    switch (text[1]) {
    case 't':
        meant = '\t';
        return kShort;
    case 'n':
        meant = '\n';
        return kShort;
    case '"':
    case '\\':
        meant = text[1];
        return kShort;
    case 'x':
        break;
    default:
        return 0;
    }
    if (text.size() < kHexadecimal)
        return 0;
    const std::size_t high = kDigits.find(text[2]);
    const std::size_t low = kDigits.find(text[3]);
    if (high == std::string_view::npos || low == std::string_view::npos)
        return 0;
    const auto character = static_cast<char>(high << 4U | low);
    if (!isControl(character) || character == '\t' || character == '\n') // two have a shorter form
        return 0;
    meant = character;
    return kHexadecimal;
}

} // namespace

std::string escapeText(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text)
        appendEscaped(result, c);
    return result;
}

std::string unescapeText(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        char meant = text.front();
        const std::size_t length = readSequence(text, meant);
        result += meant;
        text.remove_prefix(length != 0 ? length : 1);
    }
    return result;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
