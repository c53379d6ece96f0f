// The system's own words for an error, asked for by the test itself.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

namespace testwindows {

// With the line break that the system ends it with.
inline std::string systemText(DWORD code) {
    char text[1024];
    constexpr DWORD kNeutralDefault = 0x400;
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                        nullptr, code, kNeutralDefault, text, sizeof text, nullptr);
    if (length == 0)
        throw std::runtime_error("the system has no words for " + std::to_string(code));
    return std::string(text, length);
}

// Without it.
inline std::string systemLine(DWORD code) {
    const std::string text = systemText(code);
    return text.substr(0, text.find_last_not_of(" \r\n") + 1);
}

} // namespace testwindows
