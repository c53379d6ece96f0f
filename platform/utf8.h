// UTF-8 by the letter: shortest forms only, no surrogates, nothing beyond U+10FFFF. For code that
// must take text apart or refuse what is none, without a detour through the system.
#pragma once

#include <optional>
#include <string_view>

namespace platform {

// Takes one code point off the front of a text that is not empty. Nothing, with the text as it was,
// when it does not begin with a valid sequence.
std::optional<char32_t> takeCodePoint(std::string_view& text) noexcept;

bool isValidUtf8(std::string_view text) noexcept;

} // namespace platform
