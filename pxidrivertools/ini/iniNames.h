// When two names of sections or keys are the same name, and a hash that agrees with it.
#pragma once

#include "pxidrivertools/asciiText.h"

#include <cstdint>
#include <cstring>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Case-sensitive: byte for byte. Otherwise: leading white space of both is skipped, letters are
// compared after upper-casing, and what the longer one has left over may be white space only. That
// is no equivalence: "a" is equal to "a " and to "a<tab>", which are not equal to each other.
bool equalNames(bool caseSensitive, std::string_view left, std::string_view right) noexcept;

// Whether every name that is equal to `later` is also equal to `earlier`, so that a search from the
// front never gets to `later`.
bool hidesName(bool caseSensitive, std::string_view earlier, std::string_view later) noexcept;

// Equal names have equal hashes, of one process; another process has others. Whoever does not run
// in it cannot choose names that collide.
std::uint32_t hashName(bool caseSensitive, std::string_view name) noexcept;

// The last bytes of a name, eight at most, in one number that differs when they differ.
inline std::uint64_t lastEight(std::string_view name) noexcept {
    const char* const end = name.data() + name.size();
    if (name.size() >= 8) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, end - 8, 8);
        return bytes;
    }
    if (name.size() >= 4) {
        std::uint32_t first = 0;
        std::uint32_t last = 0;
        std::memcpy(&first, name.data(), 4);
        std::memcpy(&last, end - 4, 4);
        return first | std::uint64_t{last} << 32;
    }
    std::uint64_t bytes = 0;
    for (const char c : name)
        bytes = bytes << 8 | static_cast<unsigned char>(c);
    return bytes;
}

// A cheaper, shorter hash: names that are equal either way have equal tags. Never 0.
inline std::uint16_t tagTrimmedName(std::string_view name) noexcept {
    constexpr std::uint64_t kBothCases = 0xDFDFDFDFDFDFDFDFU; // what differs between "a" and "A"
    constexpr std::uint64_t kOddFactor = 0x9E3779B97F4A7C15U;
    const std::uint64_t hash = ((lastEight(name) & kBothCases) ^ name.size()) * kOddFactor;
    return static_cast<std::uint16_t>(hash >> 48 | 1);
}
inline std::uint16_t tagName(std::string_view name) noexcept {
    return tagTrimmedName(trim(name));
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
