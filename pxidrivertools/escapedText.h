// How texts are stored in INI files, so that a line stays a line.
#pragma once

#include <string>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// A tab becomes \t, a line feed \n, a double quote \", a backslash \\, and any other control
// character (127 is one) \x and its code in two lower-case hexadecimal digits. Everything else
// stays. Raises std::bad_alloc only.
std::string escapeText(std::string_view text);

// Undoes it: each sequence that escapeText writes becomes its character again, so what was escaped
// comes back byte for byte. Every other backslash stays as it is, and what follows it, too: one at
// the end, "\a", and "\x" before anything but the digits that stand for a control character, such
// as
// "\x41", "\x1F" in capitals, and "\x0a", which is written "\n". Raises std::bad_alloc only.
std::string unescapeText(std::string_view text);

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
