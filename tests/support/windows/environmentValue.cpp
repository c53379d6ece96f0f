#include "tests/support/environmentValue.h"

#include <windows.h>

#include <array>
#include <cstdlib>

namespace testsupport {

std::optional<std::string> environmentValue(const std::string& name) {
    std::array<char, 32768> text{};
    const DWORD length =
        GetEnvironmentVariableA(name.c_str(), text.data(), static_cast<DWORD>(text.size()));
    if (length == 0)
        return std::nullopt;
    return std::string(text.data(), length);
}

// The system's environment and the C library's copy of it.
void setEnvironmentValue(const std::string& name, const std::optional<std::string>& value) {
    _putenv_s(name.c_str(), value.value_or("").c_str());
    SetEnvironmentVariableA(name.c_str(), value ? value->c_str() : nullptr);
}

} // namespace testsupport
