#include "platform/windows/environmentVariable.h"

#include "platform/text.h"
#include "platform/windows/systemHeaders.h"

namespace platform {

std::optional<std::string> environmentVariable(const wchar_t* name) {
    std::wstring wide;
    // The variable may grow between the two looks at it.
    for (DWORD needed = GetEnvironmentVariableW(name, nullptr, 0); needed > wide.size();) {
        wide.resize(needed);
        needed = GetEnvironmentVariableW(name, wide.data(), needed);
        if (needed < wide.size()) {
            wide.resize(needed);
            break;
        }
    }
    std::string text;
    if (wide.empty() || toUtf8(wide, text) != Conversion::done)
        return std::nullopt;
    return text;
}

SystemCode setEnvironmentVariable(const wchar_t* name, const std::string& utf8Value) {
    std::wstring wide;
    if (toWide(utf8Value, wide) != Conversion::done)
        return ERROR_NO_UNICODE_TRANSLATION;
    return SetEnvironmentVariableW(name, wide.c_str()) ? kNoSystemError : lastFailureCode();
}

} // namespace platform
