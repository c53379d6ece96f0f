// Reads a text file without the cost of formatted streams, and without ever holding all of it: a
// piece that is read and used again stays in the processor's cache. Private to this room.
#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace pcibus {

// A path for messages, in UTF-8 on every system.
std::string pathText(const std::filesystem::path& path);

class FilePieces {
public:
    // Opens the file. Raises BusError ("file: reason"), as next() does.
    explicit FilePieces(const std::filesystem::path& file);

    // The next lines, whole and with their ends; the last ones may lack it. Empty at the end of the
    // file, whatever its size says: pipes and special files too. Good until the next call.
    std::string_view next();

private:
    std::size_t read(char* to, std::size_t size);

    const std::filesystem::path& name_;
    std::filebuf file_; // takes paths of any character set on every system
    std::string buffer_;
    std::size_t begin_ = 0; // of what has been read and not yet given
    std::size_t end_ = 0;
};

} // namespace pcibus
