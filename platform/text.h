// Conversion between UTF-8 and the system's wide characters (UTF-16 or UTF-32, by the width of
// wchar_t).
#pragma once

#include <string>

namespace platform {

enum class Conversion { done, invalidText, failed };

// Both replace `result`, refuse text that is not valid, and raise std::bad_alloc only.
Conversion toWide(const std::string& utf8, std::wstring& result);
Conversion toUtf8(const std::wstring& wide, std::string& result);

// A text that the system's narrow functions gave or take, in UTF-8: as it is where it is valid
// UTF-8, which is what the product takes it for, else out of the process's narrow character set. On
// a system without one, and for a text that is none in it, as it is. Raises std::bad_alloc.
std::string readableText(const std::string& text);

// The name of that character set, as in "code page 1252"; empty where text is UTF-8 throughout.
std::string narrowCharacterSet();

} // namespace platform
