#include "platform/systemCode.h"

#include <cerrno>
#include <system_error>

namespace platform {

SystemCode lastSystemCode() noexcept {
    return static_cast<SystemCode>(errno);
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

bool isSharingViolation(SystemCode) noexcept {
    return false; // every file can be opened while others have it open
}

const char* systemCodeOrigin() noexcept {
    return "posix";
}

std::string systemMessage(SystemCode code) {
    return std::generic_category().message(static_cast<int>(code));
}

} // namespace platform
