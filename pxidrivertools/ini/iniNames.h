// When two names of sections or keys are the same name, and a hash that agrees with it.
#pragma once

#include <cstdint>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Case-sensitive: byte for byte. Otherwise: leading white space of both is skipped, letters are
// compared after upper-casing, and what the longer one has left over may be white space only. That
// is no equivalence: "a" is equal to "a " and to "a<tab>", which are not equal to each other.
bool equalNames(bool caseSensitive, std::string_view left, std::string_view right) noexcept;

// Whether every name that is equal to `later` is also equal to `earlier`, so that a search from the
// front never gets to `later`.
bool hidesName(bool caseSensitive, std::string_view earlier, std::string_view later) noexcept;

// Equal names have equal hashes.
std::uint32_t hashName(bool caseSensitive, std::string_view name) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
