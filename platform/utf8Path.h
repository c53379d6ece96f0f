// A path of the standard library from a text in UTF-8, and back, whatever the system's narrow
// character set is.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace platform {

// Raises std::filesystem::filesystem_error for a text that can be no path on this system.
inline std::filesystem::path utf8Path(std::string_view utf8) {
    return {std::u8string(utf8.begin(), utf8.end())};
}

inline std::string utf8Text(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

} // namespace platform
