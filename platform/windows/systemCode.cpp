#include "platform/systemCode.h"

#include "platform/text.h"
#include "platform/windows/systemMessage.h"
#include "platform/windows/uniqueHandle.h"

#include <setupapi.h>

namespace platform {

SystemCode lastSystemCode() noexcept {
    return GetLastError();
}

SystemCode lastFailureCode() noexcept {
    const SystemCode code = lastSystemCode();
    return code == kNoSystemError ? ERROR_GEN_FAILURE : code;
}

bool isInstallationCode(SystemCode code) noexcept {
    constexpr SystemCode kOfInstallation = APPLICATION_ERROR_MASK | ERROR_SEVERITY_ERROR;
    return (code & kOfInstallation) == kOfInstallation;
}

bool isOutOfMemory(SystemCode code) noexcept {
    return code == ERROR_NOT_ENOUGH_MEMORY || code == ERROR_OUTOFMEMORY;
}

SystemCode outOfMemoryCode() noexcept {
    return ERROR_OUTOFMEMORY;
}

SystemCode malformedDataCode() noexcept {
    return ERROR_INVALID_DATA;
}

SystemCode failedTransferCode() noexcept {
    return ERROR_IO_DEVICE;
}

bool isRefusal(SystemCode code) noexcept {
    return code == ERROR_ACCESS_DENIED || code == ERROR_WRITE_PROTECT;
}

bool isOutOfRoom(SystemCode code) noexcept {
    return code == ERROR_DISK_FULL || code == ERROR_HANDLE_DISK_FULL ||
           code == ERROR_FILE_TOO_LARGE;
}

bool isNameTooLong(SystemCode code) noexcept {
    return code == ERROR_FILENAME_EXCED_RANGE;
}

bool isSharingViolation(SystemCode code) noexcept {
    return code == ERROR_SHARING_VIOLATION;
}

const char* systemCodeOrigin() noexcept {
    return "win32";
}

namespace {

constexpr DWORD kMessageFlags =
    FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
static_assert(kMessageFlags == 0x1300);
constexpr DWORD kNeutralDefault = 0x400;

// With these flags the functions take the address of a pointer in place of a buffer.
std::wstring wideSystemMessage(SystemCode code) {
    wchar_t* text = nullptr;
    const DWORD length = FormatMessageW(kMessageFlags, nullptr, code, kNeutralDefault,
                                        reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    const LocalMemory owner(text);
    return length == 0 ? std::wstring() : std::wstring(text, length);
}

} // namespace

std::string rawSystemMessage(SystemCode code) {
    char* text = nullptr;
    const DWORD length = FormatMessageA(kMessageFlags, nullptr, code, kNeutralDefault,
                                        reinterpret_cast<char*>(&text), 0, nullptr);
    const LocalMemory owner(text);
    return length == 0 ? std::string() : readableText(std::string(text, length));
}

std::string systemMessage(SystemCode code) {
    std::string text;
    if (toUtf8(wideSystemMessage(code), text) != Conversion::done)
        text.clear();
    text.resize(text.find_last_not_of(" \r\n") + 1);
    return text.empty() ? "system error " + std::to_string(code) : text;
}

} // namespace platform
