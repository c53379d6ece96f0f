// What a stream of this program leads to, as far as the form of its output depends on it.
#pragma once

#include <cstdio>

namespace platform {

// A person looks at the stream while it is written.
bool isTerminal(std::FILE* stream) noexcept;

// The same, and the terminal takes escape sequences, for colours among others. May switch them on
// until the program ends, where a system wants that.
bool takesEscapes(std::FILE* stream) noexcept;

} // namespace platform
