#include "platform/systemCode.h"

#include "platform/windows/systemMessage.h"
#include "platform/windows/uniqueHandle.h"

namespace platform {

SystemCode lastSystemCode() noexcept {
    return GetLastError();
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

bool isSharingViolation(SystemCode code) noexcept {
    return code == ERROR_SHARING_VIOLATION;
}

const char* systemCodeOrigin() noexcept {
    return "win32";
}

std::string rawSystemMessage(SystemCode code) {
    constexpr DWORD kFlags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
    static_assert(kFlags == 0x1300);
    constexpr DWORD kNeutralDefault = 0x400;
    char* text = nullptr;
    // With this flag the function takes the address of a pointer in place of a buffer.
    const DWORD length = FormatMessageA(kFlags, nullptr, code, kNeutralDefault,
                                        reinterpret_cast<char*>(&text), 0, nullptr);
    const LocalMemory owner(text);
    return length == 0 ? std::string() : std::string(text, length);
}

std::string systemMessage(SystemCode code) {
    std::string text = rawSystemMessage(code);
    text.resize(text.find_last_not_of(" \r\n") + 1);
    return text.empty() ? "system error " + std::to_string(code) : text;
}

} // namespace platform
