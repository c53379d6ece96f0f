// Text from outside (files, names, the bus, the command line) as it may be shown on a terminal: no
// character of it is a command there, moves what stands around it, or cannot be seen.
#pragma once

#include <string>
#include <string_view>

namespace tavctl {

// Whether a character is shown by its number instead: controls (C0, C1, DEL), separators of lines
// and paragraphs, format characters (among them those that change the direction of writing), and
// code points that are no characters.
bool isUnprintable(char32_t character) noexcept;

// Such characters become "\x1B" (below 256) or "\u202E", and a byte that is not UTF-8 "\xFF". All
// else stays, a backslash too: what is shown is for reading, not for reading back.
std::string printable(std::string_view text);

// The same for a text of lines, whose line feeds and tabulators stay. With `colours` the sequences
// that set colours ("ESC [ 1 ; 32 m") stay too.
std::string printableLines(std::string_view text, bool colours = false);

} // namespace tavctl
