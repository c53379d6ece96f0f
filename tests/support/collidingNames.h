// Names as somebody writes them who wants a table of names to be slow.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace testsupport {

// Different names of sixteen bytes, without lower-case letters, that have one and the same hash
// where each eight bytes are mixed in by an exclusive or, a product with a known odd factor, and a
// shift: the second half is chosen to cancel what the first half has done.
inline std::vector<std::string> collidingNames(std::size_t count) {
    constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15U;
    std::uint64_t inverse = kFactor; // each step doubles the bits that are right
    for (int step = 0; step < 6; ++step)
        inverse *= 2 - kFactor * inverse;
    constexpr std::uint64_t kWanted = 0x1234567890ABCDEFU;
    const std::uint64_t cancelled = (kWanted ^ (kWanted >> 32)) * inverse;
    const auto isPlain = [](char c) {
        return static_cast<unsigned char>(c) > ' ' && c != 127 && !(c >= 'a' && c <= 'z') &&
               std::strchr("[]=;\"'\\#", c) == nullptr;
    };
    std::mt19937_64 random(1); // NOLINT(bugprone-random-generator-seed): the same ones in every run
    std::set<std::string> names;
    while (names.size() < count) {
        std::string name(16, 'A');
        for (std::size_t i = 0; i < 8; ++i)
            name[i] = static_cast<char>('A' + random() % 26);
        std::uint64_t first = 0;
        std::memcpy(&first, name.data(), 8);
        std::uint64_t hash = (name.size() ^ first) * kFactor;
        hash ^= hash >> 32;
        const std::uint64_t second = hash ^ cancelled;
        std::memcpy(name.data() + 8, &second, 8);
        if (std::all_of(name.begin(), name.end(), isPlain))
            names.insert(name);
    }
    return {names.begin(), names.end()};
}

} // namespace testsupport
