// What a stream of this program leads to, as far as the form of its output depends on it.
#pragma once

#include <cstdio>

namespace platform {

// A person looks at the stream while it is written.
bool isTerminal(std::FILE* stream) noexcept;

// The same, and the terminal shows colour by escape sequences. May switch them on, where a system
// wants that.
bool showsColour(std::FILE* stream) noexcept;

} // namespace platform
