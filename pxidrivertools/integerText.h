// Texts that are a decimal number and nothing else, with white space around it at most. (scan.h
// reads numbers at the front of a text, and saturates.)
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// White space, one sign at most directly before the digits, digits, white space; nothing for any
// other text and for a number outside the range of the type. There are no prefixes.
std::optional<std::int32_t> readSigned(std::string_view text) noexcept;
std::optional<std::uint32_t> readUnsigned(std::string_view text) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
