// The bytes of error records: how text is escaped into them, and how far a value in them reaches.
#pragma once

#include <cstddef>

namespace nZOQUIL000 {

// Length in bytes of `text` as a JSON string's content, without the surrounding quotes.
std::size_t escapedLength(const char* text) noexcept;

// Writes that content at `out` and returns the position after it. Control characters and byte 127,
// quotes and backslashes are escaped; every other byte, 128 to 255 included, stands for itself.
char* writeEscaped(char* out, const char* text) noexcept;

// The first byte at or after `position` that is not JSON white space.
const char* skipWhitespace(const char* position) noexcept;

// The closing bracket of the object or array that begins at `position` (white space may stand
// before it); null when the text is not well-formed or nests deeper than a record ever does.
const char* findClosingBracket(const char* position) noexcept;

} // namespace nZOQUIL000
