// Puts paths together as the system writes them. Stands alone, as folderReader.h does.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace platform {

// "folder/name", or "folder\name" on Windows; a separator at the folder's end is enough, and
// without a folder it is the name.
inline std::string pathBelow(std::string folder, std::string_view name) {
    constexpr auto kSeparator = static_cast<char>(std::filesystem::path::preferred_separator);
    if (!folder.empty() && folder.back() != '/' && folder.back() != kSeparator)
        folder += kSeparator;
    return folder.append(name);
}

} // namespace platform
