// Where the text of an INI file comes from.
#pragma once

#include <cstdint>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Bytes asked for at a time.
inline constexpr std::uint32_t kReadChunk = 2084;

// Puts up to `size` bytes into `buffer` and returns how many; 0 at the end, negative on an error.
// Fewer than asked for does not mean the end. Must not throw.
struct IniReader {
    std::int32_t (*read)(void* context, char* buffer, std::uint32_t size);
    void* context;
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
