// Reads numbers at the front of a text as the C library's scanf conversions do, without its locale
// and without its undefined results: white space before a number is skipped, one sign is accepted,
// and a number beyond the range of its type saturates. On success the text read is taken off the
// cursor; on failure the cursor is left where it was.
#pragma once

#include "pxidrivertools/asciiText.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

inline constexpr std::size_t kAnyWidth = std::numeric_limits<std::size_t>::max();

// "%d"
std::optional<std::int32_t> scanSigned(std::string_view& cursor) noexcept;

// "%u": a negative number wraps around, as unsigned numbers do.
std::optional<std::uint32_t> scanUnsigned(std::string_view& cursor) noexcept;

// "%x", optionally with a field width, which counts the sign and an "0x" but no white space. An
// "0x" without digits behind it is no number.
std::optional<std::uint32_t> scanHexadecimal(std::string_view& cursor,
                                             std::size_t width = kAnyWidth) noexcept;

// Takes one character off the cursor when it is `expected`.
constexpr bool scanCharacter(std::string_view& cursor, char expected) noexcept {
    if (cursor.empty() || cursor.front() != expected)
        return false;
    cursor.remove_prefix(1);
    return true;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
