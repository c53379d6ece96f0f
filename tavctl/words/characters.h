// The characters of UTF-8 texts, which are what takes room on paper. A byte that belongs to none
// counts with the character before it.
#pragma once

#include <cstddef>
#include <string_view>

namespace tavctl {

// Whether a byte is not the first of its character.
constexpr bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::size_t characterCount(std::string_view text);

// The front of a text, or all of it when it has no more characters.
std::string_view firstCharacters(std::string_view text, std::size_t count);

} // namespace tavctl
