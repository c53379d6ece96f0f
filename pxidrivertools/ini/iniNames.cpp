#include "pxidrivertools/ini/iniNames.h"

#include <algorithm>
#include <utility>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

bool equalUpper(std::string_view left, std::string_view right) noexcept {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return a == b || toUpper(a) == toUpper(b); });
}

// Upper-cases eight bytes at once: a byte is a lower-case letter when adding the distance to the
// end of the ASCII range carries into its top bit for "a" but not for "z".
std::uint64_t upperEight(std::uint64_t bytes) noexcept {
    constexpr std::uint64_t kEach = 0x0101010101010101U;
    const std::uint64_t low = bytes & (kEach * 0x7F);
    const std::uint64_t fromA = low + kEach * (0x80 - 'a');
    const std::uint64_t aboveZ = low + kEach * (0x7F - 'z');
    const std::uint64_t lower = ~bytes & (fromA ^ aboveZ) & (kEach * 0x80);
    return bytes - (lower >> 2); // 0x80 becomes 0x20, the distance between the cases
}

constexpr std::uint64_t kOddFactor = 0x9E3779B97F4A7C15U;

} // namespace

bool equalNames(bool caseSensitive, std::string_view left, std::string_view right) noexcept {
    if (caseSensitive)
        return left == right;
    left = trimLeft(left);
    right = trimLeft(right);
    if (left.size() > right.size())
        std::swap(left, right);
    return equalUpper(left, right.substr(0, left.size())) &&
           trimLeft(right.substr(left.size())).empty();
}

bool hidesName(bool caseSensitive, std::string_view earlier, std::string_view later) noexcept {
    return caseSensitive ? earlier == later : equalUpper(trimLeft(earlier), trimLeft(later));
}

std::uint32_t hashName(bool caseSensitive, std::string_view name) noexcept {
    if (!caseSensitive)
        name = trim(name);
    std::uint64_t hash = name.size();
    const auto mix = [&](std::uint64_t bytes) {
        hash = (hash ^ (caseSensitive ? bytes : upperEight(bytes))) * kOddFactor;
        hash ^= hash >> 32;
    };
    // All but the last bytes, which may overlap those before.
    for (std::size_t at = 0; at + 8 < name.size(); at += 8) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, name.data() + at, 8);
        mix(bytes);
    }
    mix(lastEight(name));
    return static_cast<std::uint32_t>(hash ^ (hash >> 15));
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
