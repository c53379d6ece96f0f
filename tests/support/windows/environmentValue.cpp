#include "tests/support/environmentValue.h"

#include "platform/utf8Path.h"

#include <windows.h>

#include <array>
#include <cstdlib>

namespace testsupport {

std::optional<std::string> environmentValue(const std::string& name) {
    std::array<wchar_t, 32768> text{};
    const DWORD length = GetEnvironmentVariableW(platform::utf8Path(name).c_str(), text.data(),
                                                 static_cast<DWORD>(text.size()));
    if (length == 0)
        return std::nullopt;
    return platform::utf8Text(std::wstring(text.data(), length));
}

// The system's environment and the C library's copy of it.
void setEnvironmentValue(const std::string& name, const std::optional<std::string>& value) {
    const std::wstring wideName = platform::utf8Path(name).wstring();
    const std::wstring wideValue = platform::utf8Path(value.value_or("")).wstring();
    _wputenv_s(wideName.c_str(), wideValue.c_str());
    SetEnvironmentVariableW(wideName.c_str(), value ? wideValue.c_str() : nullptr);
}

} // namespace testsupport
