// The text buffer of an error status: replacing the JSON text, finding the place for a further
// member, and making room there. memberWriter.h puts members in with these.
#pragma once

#include "quil/tErrorStatus.h"

#include <cstddef>
#include <cstdint>

namespace nZOQUIL000 {

// The byte that ends every text buffer; the zero bytes before it are the room for insertions.
inline constexpr char kTextMarker = 'J';

// The longest text, and the largest request for room, that a buffer can be grown for.
inline constexpr std::uint32_t kMaxTextLength = kMaxTextCapacity - 2;

// Replaces the text ("{}" when `newText` is null). Returns the position of its last character, the
// closing brace, as the place for the first insertion; null when the text is too long or no memory
// could be had, with the old text unchanged.
char* replaceText(tErrorStatus& status, const char* newText) noexcept;

// Makes the buffer at least `extra` + 2 bytes large and returns the position of the text's closing
// bracket; null when that fails or the text is not a well-formed object or array.
char* reserveAndLocate(tErrorStatus& status, std::uint32_t extra) noexcept;

// Opens a gap of `needed` bytes at `position`, which is a closing bracket or the byte after an
// opening one, with the comma that a non-empty container needs. Returns the gap, which the caller
// must fill whole; null when the room up to the marker is too small.
char* insertSpace(char* position, std::size_t needed) noexcept;

} // namespace nZOQUIL000
