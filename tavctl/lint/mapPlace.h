// Where a traversal map leads, told without a bus: two maps with equal places lead to one bridge.
#pragma once

#include <cstdint>
#include <list>
#include <optional>
#include <string_view>

namespace tavctl::lint {

// Nearest the bridge first; the hops above the anchor are stand-ins. Nothing when a step cannot be
// read.
using MapPlace = std::list<std::uint8_t>;
std::optional<MapPlace> placeOfMap(std::string_view map);

} // namespace tavctl::lint
