#include "platform/windows/hostVariable.h"

#include "platform/windows/environmentVariable.h"
#include "platform/windows/systemHeaders.h"

namespace platform {

namespace {

std::wstring nameInThisProcess(const wchar_t* name) {
    FILETIME created = {};
    FILETIME ignored = {};
    GetProcessTimes(GetCurrentProcess(), &created, &ignored, &ignored, &ignored);
    std::wstring whole = name;
    for (const DWORD part : {GetCurrentProcessId(), created.dwHighDateTime, created.dwLowDateTime})
        whole.append(L"_").append(std::to_wstring(part));
    return whole;
}

} // namespace

std::optional<std::string> hostVariable(const wchar_t* name) {
    return environmentVariable(nameInThisProcess(name).c_str());
}

SystemCode setHostVariable(const wchar_t* name, const std::string& utf8Value) {
    return setEnvironmentVariable(nameInThisProcess(name).c_str(), utf8Value);
}

void clearHostVariable(const wchar_t* name) {
    SetEnvironmentVariableW(nameInThisProcess(name).c_str(), nullptr);
}

} // namespace platform
