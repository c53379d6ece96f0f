// Writes files that are too large to be held as a text, piece by piece.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

namespace testhostile {

class HugeFile {
public:
    // Raises std::runtime_error when it cannot be written, as all of these do.
    explicit HugeFile(const std::filesystem::path& path);

    HugeFile& text(const std::string& text);
    // As many copies of a text as make up this many bytes, or a few more.
    HugeFile& fill(const std::string& text, std::uint64_t bytes);
    // For each number below `count` the text with the number in place of "#".
    HugeFile& numbered(const std::string& text, std::uint64_t count);

    // Closes the file; its size.
    std::uint64_t finish();

private:
    void put(const std::string& text);

    std::filesystem::path path_;
    std::ofstream stream_;
};

} // namespace testhostile
