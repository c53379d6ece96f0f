#include "platform/systemCode.h"

#include <cerrno>
#include <system_error>

namespace platform {

SystemCode lastSystemCode() noexcept {
    return static_cast<SystemCode>(errno);
}

SystemCode lastFailureCode() noexcept {
    const SystemCode code = lastSystemCode();
    return code == kNoSystemError ? EIO : code;
}

bool isInstallationCode(SystemCode) noexcept {
    return false;
}

bool isOutOfMemory(SystemCode code) noexcept {
    return code == ENOMEM;
}

SystemCode outOfMemoryCode() noexcept {
    return ENOMEM;
}

SystemCode malformedDataCode() noexcept {
    return EBADMSG;
}

SystemCode failedTransferCode() noexcept {
    return EIO;
}

bool isRefusal(SystemCode code) noexcept {
    return code == EACCES || code == EPERM || code == EROFS;
}

bool isOutOfRoom(SystemCode code) noexcept {
    return code == ENOSPC || code == EDQUOT || code == EFBIG;
}

bool isNameTooLong(SystemCode code) noexcept {
    return code == ENAMETOOLONG;
}

bool isSharingViolation(SystemCode) noexcept {
    return false; // every file can be opened while others have it open
}

const char* systemCodeOrigin() noexcept {
    return "posix";
}

// The system has this code for discs in a drive only; here a path that leads to no file gets it.
std::string systemMessage(SystemCode code) {
    if (code == EMEDIUMTYPE)
        return "Not a regular file";
    return std::generic_category().message(static_cast<int>(code));
}

} // namespace platform
