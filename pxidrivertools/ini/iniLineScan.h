// The search that every byte of a file goes through: for the end of a line and the first "=" in it,
// sixteen bytes at a time where the processor can.
#pragma once

#include <bit>
#include <cstddef>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

constexpr bool endsLine(char c) noexcept {
    return c == '\r' || c == '\n' || c == '\0';
}

struct IniLineScan {
    const char* end = nullptr;    // the byte that ends the line
    const char* equals = nullptr; // the first "=" before it, or null
};

// From `position` on. A NUL byte must stand at `bound`, which ends the last line.
inline IniLineScan scanLine(const char* position, const char* bound) noexcept {
    IniLineScan scan;
#if defined(__SSE2__)
    constexpr std::ptrdiff_t kStep = 16;
    for (; bound - position >= kStep; position += kStep) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(position));
        // All that end a line are control characters, and so are few others.
        const __m128i controls = _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8('\r')), bytes);
        const __m128i signs = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('='));
        auto ends = static_cast<unsigned>(_mm_movemask_epi8(controls));
        const auto equals = static_cast<unsigned>(_mm_movemask_epi8(signs));
        if (equals != 0 && scan.equals == nullptr)
            scan.equals = position + std::countr_zero(equals);
        for (; ends != 0; ends &= ends - 1) {
            scan.end = position + std::countr_zero(ends);
            if (!endsLine(*scan.end))
                continue;
            if (scan.equals > scan.end)
                scan.equals = nullptr;
            return scan;
        }
    }
#else
    static_cast<void>(bound);
#endif
    for (; !endsLine(*position); ++position)
        if (*position == '=' && scan.equals == nullptr)
            scan.equals = position;
    scan.end = position;
    return scan;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
