// Reads a text file without the cost of formatted streams, and without ever holding all of it: a
// piece that is read and used again stays in the processor's cache. Private to this room.
#pragma once

#include "platform/inputFile.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace pcibus {

// In bytes. No line of a dump comes near it.
inline constexpr std::size_t kLongestLine = std::size_t{1} << 20;

class FilePieces {
public:
    // A UTF-8 path, which must outlive it.
    explicit FilePieces(const std::string& file);

    // The next lines, whole and with their ends; the last ones may lack it. Empty at the end of the
    // file, whatever its size says: pipes and special files too. Good until the next call. Raises
    // BusError ("file: reason"), also for a line without an end: longer than kLongestLine.
    std::string_view next();

private:
    const std::string& name_;
    platform::InputFile file_;
    std::size_t capacity_;
    std::unique_ptr<char[]> buffer_; // small files touch only its beginning
    std::size_t begin_ = 0;          // of what has been read and not yet given
    std::size_t end_ = 0;
};

} // namespace pcibus
