// How texts are stored in INI files, so that a line stays a line.
#pragma once

#include <string>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// A tab becomes \t, a line feed \n, a double quote \", a backslash \\, and any other control
// character (127 is one) \x and its code in two lower-case hexadecimal digits. Everything else
// stays. Raises std::bad_alloc only.
std::string escapeText(std::string_view text);

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
