// Writing a file anew where it stands, so that whoever watches it, or has a link to it, sees the
// new content. Where the system can, the old content stays until it is written over.
#pragma once

#include "platform/file.h"
#include "platform/systemCode.h"

#include <cstdint>
#include <cstdio>

namespace platform {

// Opens the file for writing, and makes an empty one where there is none, readable and writable by
// its owner only. Null on failure; lastSystemCode() says why. What is there must be a file, or the
// null device, which takes everything and keeps nothing.
// On Linux it keeps its content, and a symbolic link is followed only if it is the user's own or
// root's; on Windows it is emptied, as opening it with the mode "wb" does.
Stream openInPlace(const char* path) noexcept;

// Makes sure that the file can come to hold this many bytes, before any of them is written. On
// failure (ENOSPC, EDQUOT, EFBIG) the file is as it was. On Windows, where the file is empty by
// now, nothing is done.
SystemCode secureSpace(std::FILE* stream, std::uint64_t size) noexcept;

// Goes to where the first `size` bytes end, which are to stay as they are. Answers where writing
// has to begin: there, or at 0 where opening has emptied the file.
std::uint64_t keepFront(std::FILE* stream, std::uint64_t size) noexcept;

// Drops what the file has behind this many bytes. The stream must be flushed before.
SystemCode cutBehind(std::FILE* stream, std::uint64_t size) noexcept;

} // namespace platform
