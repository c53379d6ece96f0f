// Lists as they stand in one value of an INI file: items with commas between.
#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Items are not trimmed. An item between two commas may be empty; nothing behind the last comma is
// no item, so an empty text is an empty list. Raises std::bad_alloc and std::length_error.
std::list<std::string> splitList(std::string_view text);

// Both raise std::bad_alloc only.
std::string joinList(const std::list<std::string>& items);
std::string joinList(const std::list<std::int32_t>& items);

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
