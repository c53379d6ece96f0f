// What the product does with files beyond the C library: opening by UTF-8 path, forcing to disk,
// and the last-write time. fileInPlace.h and fileReplacement.h have two ways of writing a file
// anew.
#pragma once

#include "platform/systemCode.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

namespace platform {

struct StreamCloser {
    void operator()(std::FILE* stream) const noexcept { std::fclose(stream); }
};
// Owns an open stream. To learn the result of closing it, release() it and call std::fclose.
using Stream = std::unique_ptr<std::FILE, StreamCloser>;

// Paths are UTF-8. On Windows those may also be in the program's code page, as they come from the
// registry, as long as they are not valid UTF-8 by accident.

// Opens a file with a mode of fopen. Null on failure; lastSystemCode() says why. What is read,
// updated or appended to must be a file, so that a pipe or a device in its place holds nobody up;
// the null device may be read, as an empty file. Updating and appending follow on Linux only such
// symbolic links as are the user's own or root's. A file that appending creates is readable and
// writable by its owner only, or as restrictToOwner() says. Writing from the start ("w") goes to
// whatever there is. Programs that this process starts do not get the file on Linux.
Stream openStream(const char* path, const char* mode) noexcept;

// A last-write time, in the system's own units since its own epoch: to be compared for equality
// and order only.
using FileTime = std::uint64_t;

// The last-write time by a look into the folder; nothing when there is no such file.
std::optional<FileTime> lastWriteTime(const char* path) noexcept;

// Makes an open file, which has this path, readable and writable by its owner only, as far as the
// system knows owners. On Linux a folder that lets its group write and hands its group on to new
// files (the set-group-ID bit) shares what is made in it: the group may read and write too, and
// others may read if the folder lets them list it. 0, or -1 with lastSystemCode() set.
int restrictToOwner(std::FILE* stream, const char* path) noexcept;

// Forces what has been written to the stream onto the disk. The stream must be flushed before.
SystemCode forceToDisk(std::FILE* stream) noexcept;

SystemCode removeFile(const char* path) noexcept;

// The parts of a path; joined in this order they are the path again.
struct PathParts {
    std::string drive;     // "C:"; empty on systems without drives
    std::string directory; // with its last separator
    std::string name;
    std::string extension; // with its dot
};
PathParts splitPath(const std::string& path);

} // namespace platform
