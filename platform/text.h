// Conversion between UTF-8 and the system's wide characters (UTF-16 or UTF-32, by the width of
// wchar_t).
#pragma once

#include <string>

namespace platform {

enum class Conversion { done, invalidText, failed };

// Both replace `result`, refuse text that is not valid, and raise std::bad_alloc only.
Conversion toWide(const std::string& utf8, std::wstring& result);
Conversion toUtf8(const std::wstring& wide, std::string& result);

} // namespace platform
