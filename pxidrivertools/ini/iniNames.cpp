#include "pxidrivertools/ini/iniNames.h"

#include "platform/randomSeed.h"
#include "platform/wideProduct.h"

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

// What nobody who writes a file can know, drawn once per process. Without it no two names are known
// to collide.
struct HashKey {
    std::uint64_t start = platform::randomSeed();
    std::uint64_t factor = platform::randomSeed() | 1;
    std::uint64_t end = platform::randomSeed() | 1;
};

const HashKey& hashKey() noexcept {
    static const HashKey key;
    return key;
}

// Both halves of the product in one, so that every bit of it counts.
std::uint64_t foldedProduct(std::uint64_t left, std::uint64_t right) noexcept {
    const platform::WideProduct product = platform::wideProduct(left, right);
    return product.low ^ product.high;
}

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
    const HashKey& key = hashKey();
    std::uint64_t hash = key.start ^ name.size();
    const auto mix = [&](std::uint64_t bytes) {
        hash = foldedProduct(hash ^ (caseSensitive ? bytes : upperEight(bytes)), key.factor);
    };
    // All but the last bytes, which may overlap those before.
    for (std::size_t at = 0; at + 8 < name.size(); at += 8) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, name.data() + at, 8);
        mix(bytes);
    }
    mix(lastEight(name));
    return static_cast<std::uint32_t>(foldedProduct(hash ^ key.start, key.end));
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
