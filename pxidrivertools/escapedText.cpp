#include "pxidrivertools/escapedText.h"

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

constexpr bool isControl(char c) noexcept {
    return (c >= 0 && c < ' ') || c == 127;
}

void appendEscaped(std::string& result, char c) {
    constexpr std::string_view kDigits = "0123456789abcdef";
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

} // namespace

std::string escapeText(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text)
        appendEscaped(result, c);
    return result;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
