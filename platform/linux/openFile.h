// Opening what is meant to be a file. A pipe in a file's place would hold its reader until somebody
// writes to it, and a device without an end would fill the memory. Private to this folder.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

namespace platform {

// What else than a file may stand at the path.
enum class BesideFiles { none, theNullDevice };

// Opens the path with flags of open(2), for this process alone, without waiting for anybody. To be
// written to, a file is found through links only as followTrustedLinks() does. The descriptor, or
// -1 with errno set: EISDIR for a folder, EMEDIUMTYPE for anything else that is no file, EACCES for
// somebody else's link. What the system tells of the file is put into `told`, which may be null.
int openFile(const char* path, int flags, BesideFiles accepted, mode_t permissions = 0,
             struct stat* told = nullptr) noexcept;

} // namespace platform
