// What tells, by a look into a folder, whether a file is another one than it was.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace platform {

struct FileMark {
    std::uint64_t written = 0; // when, in the system's own units
    std::uint64_t size = 0;
    std::uint64_t identity = 0; // of the file itself, whatever it is called

    friend bool operator==(const FileMark&, const FileMark&) = default;
};

// Of a file or folder, of links what they lead to; nothing where there is none.
std::optional<FileMark> markOfFile(const std::filesystem::path& path) noexcept;

} // namespace platform
