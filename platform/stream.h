// Reading and writing whole streams of the C library. A signal that a host handles interrupts a
// transfer anywhere; it goes on from there.
#pragma once

#include <cstddef>
#include <cstdio>

namespace platform {

// As std::fread and std::fwrite with an element size of 1. Fewer bytes than asked for: the stream's
// end, or an error other than an interruption (std::ferror).
std::size_t readStream(std::FILE* stream, char* to, std::size_t size) noexcept;
std::size_t writeStream(std::FILE* stream, const char* from, std::size_t size) noexcept;

// As std::fflush.
bool flushStream(std::FILE* stream) noexcept;

// Writes what is buffered and closes. False when something was not written; the stream is gone
// either way, and errno says why. An interruption of the closing itself is none: there is nothing
// left to repeat.
bool closeStream(std::FILE* stream) noexcept;

} // namespace platform
