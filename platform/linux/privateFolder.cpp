#include "platform/privateFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace platform {

SystemCode createPrivateFolder(const std::filesystem::path& path) {
    if (mkdir(path.c_str(), S_IRWXU) != 0)
        return lastSystemCode();
    // The mask may have taken the owner's own rights away.
    if (fchmodat(AT_FDCWD, path.c_str(), S_IRWXU, AT_SYMLINK_NOFOLLOW) == 0)
        return kNoSystemError;
    const SystemCode code = lastSystemCode();
    rmdir(path.c_str());
    return code;
}

bool isFolderNameTaken(SystemCode code) noexcept {
    return code == EEXIST;
}

} // namespace platform
