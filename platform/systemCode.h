// The operating system's own error codes, as they travel through the product: Win32 codes on
// Windows, errno values on Linux, always unsigned and 32 bits wide; 0 is success. Only
// quil/systemStatus.h turns one into a status.
#pragma once

#include <cstdint>
#include <string>

namespace platform {

using SystemCode = std::uint32_t;

inline constexpr SystemCode kNoSystemError = 0;

// The error of the calling thread's last failed system or C library call.
SystemCode lastSystemCode() noexcept;

// The same of a call that has failed for certain: never 0, whatever the system left behind.
SystemCode lastFailureCode() noexcept;

// True for the codes that the system's device installation has for itself, which are no codes of
// the rest of the system and may have the same low half as one. Never true where there are none.
bool isInstallationCode(SystemCode code) noexcept;

// True for the codes by which the system reports that memory ran out.
bool isOutOfMemory(SystemCode code) noexcept;

// The codes of failures that the product meets before the system does, or of which the system says
// nothing: memory that ran out, a file whose content is not what it is read as, and a transfer that
// failed.
SystemCode outOfMemoryCode() noexcept;
SystemCode malformedDataCode() noexcept;
SystemCode failedTransferCode() noexcept;

// What both systems say of a thing that is not there: ENOENT and ERROR_FILE_NOT_FOUND.
inline constexpr SystemCode kNotFound = 2;

// True for the codes by which the system refuses a thing that is there to this user, or to
// everybody on this file system.
bool isRefusal(SystemCode code) noexcept;

// True for the codes by which the system says that there is no room for a file, or for more of it.
bool isOutOfRoom(SystemCode code) noexcept;

// True for the code by which the system says that a path, or a name in it, is longer than it takes.
bool isNameTooLong(SystemCode code) noexcept;

// True for the code by which the system reports that another process holds a file open without
// sharing it. Never true on systems that do not know such a refusal.
bool isSharingViolation(SystemCode code) noexcept;

// The name under which error records report where a system code comes from.
const char* systemCodeOrigin() noexcept;

// The system's own words for a code, for people to read. Raises std::bad_alloc only.
std::string systemMessage(SystemCode code);

} // namespace platform
