// Where a traversal map leads, told without a bus: two maps with equal places lead to one bridge.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <tuple>
#include <vector>

namespace tavctl::lint {

struct MapPlace {
    // How many bridges further down than the anchor; negative above it.
    std::ptrdiff_t level = 0;
    // Nearest the bridge first, down to the last one that the map names; those above the anchor
    // that it does not name are the same for every map.
    std::vector<std::uint8_t> hops;

    bool operator==(const MapPlace& other) const = default;
    bool operator<(const MapPlace& other) const {
        return std::tie(level, hops) < std::tie(other.level, other.hops);
    }
};

// Nothing when a step cannot be read.
std::optional<MapPlace> placeOfMap(std::string_view map);

} // namespace tavctl::lint
