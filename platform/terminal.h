// What a stream of this program leads to, as far as the form of its output depends on it.
#pragma once

#include <cstddef>
#include <cstdio>

namespace platform {

// A person looks at the stream while it is written.
bool isTerminal(std::FILE* stream) noexcept;

// The same, and the terminal takes escape sequences, for colours among others. May switch them on
// until the program ends, where a system wants that.
bool takesEscapes(std::FILE* stream) noexcept;

// How many characters a line of the terminal has; 0 where the stream leads to none, or to one that
// does not tell.
std::size_t terminalWidth(std::FILE* stream) noexcept;

} // namespace platform
