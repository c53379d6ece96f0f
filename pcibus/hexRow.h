// The sixteen bytes of a row as lspci prints them, " hh" each: nearly all of a dump. Private to
// this room.
#pragma once

#include "pcibus/address.h"

#include <array>
#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace pcibus {

inline constexpr std::size_t kRowBytes = 16;
inline constexpr std::size_t kRowCharacters = 3 * kRowBytes;

// Where a row has blanks: a bit for each character, from the first one on.
inline constexpr std::uint64_t kRowBlanks = [] {
    std::uint64_t bits = 0;
    for (std::size_t at = 0; at < kRowCharacters; at += 3)
        bits |= std::uint64_t{1} << at;
    return bits;
}();

// Reads kRowCharacters characters. False when they are anything else, with `row` in any state.
inline bool readHexRow(const char* text, std::uint8_t* row) {
    std::array<std::uint8_t, kRowCharacters> values;
    std::uint64_t blanks = 0;
    std::uint64_t digits = 0;
#if defined(__SSE2__)
    constexpr std::size_t kStep = 16;
    for (std::size_t at = 0; at < kRowCharacters; at += kStep) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + at));
        const __m128i decimals = _mm_sub_epi8(bytes, _mm_set1_epi8('0'));
        const __m128i isDecimal =
            _mm_cmpeq_epi8(_mm_min_epu8(decimals, _mm_set1_epi8(9)), decimals);
        const __m128i letters =
            _mm_sub_epi8(_mm_or_si128(bytes, _mm_set1_epi8(' ')), _mm_set1_epi8('a'));
        const __m128i isLetter = _mm_cmpeq_epi8(_mm_min_epu8(letters, _mm_set1_epi8(5)), letters);
        const auto bitsOf = [](__m128i mask) {
            return static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(mask)));
        };
        digits |= bitsOf(_mm_or_si128(isDecimal, isLetter)) << at;
        blanks |= bitsOf(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(' '))) << at;
        const __m128i digitValues =
            _mm_or_si128(_mm_and_si128(isDecimal, decimals),
                         _mm_and_si128(isLetter, _mm_add_epi8(letters, _mm_set1_epi8(10))));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(values.data() + at), digitValues);
    }
#else
    for (std::size_t at = 0; at < kRowCharacters; ++at) {
        const int value = hexValue(text[at]);
        digits |= static_cast<std::uint64_t>(value >= 0) << at;
        blanks |= static_cast<std::uint64_t>(text[at] == ' ') << at;
        values[at] = static_cast<std::uint8_t>(value);
    }
#endif
    constexpr std::uint64_t kAll = (std::uint64_t{1} << kRowCharacters) - 1;
    if (blanks != kRowBlanks || digits != (kAll & ~kRowBlanks))
        return false;
    for (std::size_t byte = 0; byte < kRowBytes; ++byte)
        row[byte] = static_cast<std::uint8_t>(values[3 * byte + 1] << 4 | values[3 * byte + 2]);
    return true;
}

} // namespace pcibus
