// Character classes and trimming as the C library's "C" locale has them, whatever locale the host
// process has chosen. Bytes above 127 belong to no class and have no upper case.
#pragma once

#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

constexpr bool isSpace(char c) noexcept {
    if (static_cast<unsigned char>(c) > ' ') // most characters
        return false;
    return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr bool isDecimalDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

constexpr char toUpper(char c) noexcept {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr std::string_view trimLeft(std::string_view text) noexcept {
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    return text;
}

constexpr std::string_view trimRight(std::string_view text) noexcept {
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

constexpr std::string_view trim(std::string_view text) noexcept {
    return trimRight(trimLeft(text));
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
