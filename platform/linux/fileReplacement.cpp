#include "platform/fileReplacement.h"

#include "platform/linux/interruption.h"
#include "platform/linux/ownFile.h"
#include "platform/linux/trustedLinks.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <vector>

namespace platform {

namespace {

constexpr const char* kAccessList = "system.posix_acl_access";
constexpr mode_t kPermissions = 07777;

SystemCode codeOf(int result) noexcept {
    return result == 0 ? kNoSystemError : lastSystemCode();
}

bool hasNoList(int error) noexcept {
    return error == ENODATA || error == ENOTSUP;
}

// One that the folder gives to each new file, perhaps.
int dropAccessList(int file) noexcept {
    return fremovexattr(file, kAccessList) == 0 || hasNoList(errno) ? 0 : -1;
}

int takeAccessList(int from, int to) {
    const ssize_t size = fgetxattr(from, kAccessList, nullptr, 0);
    if (size < 0)
        return hasNoList(errno) ? dropAccessList(to) : -1;
    std::vector<char> list(static_cast<std::size_t>(size));
    const ssize_t got = fgetxattr(from, kAccessList, list.data(), list.size());
    return got < 0 ? -1 : fsetxattr(to, kAccessList, list.data(), static_cast<std::size_t>(got), 0);
}

// The owner first: a change of it takes permissions away. Only root can give a file away. To whom
// the group may write, as one of its members, the file stays what it was for them all under another
// owner.
int takeOwner(int to, const struct stat& like) noexcept {
    struct stat now = {};
    if (fstat(to, &now) != 0)
        return -1;
    if (now.st_uid == like.st_uid && now.st_gid == like.st_gid)
        return 0;
    if (pastInterruptions([&] { return fchown(to, like.st_uid, like.st_gid); }) == 0)
        return 0;
    if (errno != EPERM || (like.st_mode & S_IWGRP) == 0)
        return -1;
    constexpr uid_t kAsItIs = static_cast<uid_t>(-1);
    return pastInterruptions([&] { return fchown(to, kAsItIs, like.st_gid); });
}

} // namespace

NewFile createExclusively(const char* path, NewFileAccess access) noexcept {
    constexpr mode_t kEverybody = 0666;
    constexpr mode_t kEverybodyReads = 0644;
    const bool isUsual = access == NewFileAccess::usual;
    const mode_t permissions = isUsual                                   ? kEverybody
                               : access == NewFileAccess::everybodyReads ? kEverybodyReads
                                                                         : ownPermissions(path);
    NewFile file;
    const int descriptor = pastInterruptions(
        [&] { return open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, permissions); });
    if (descriptor >= 0 && !isUsual)
        pastInterruptions([&] { return fchmod(descriptor, permissions); });
    file.isThere = descriptor >= 0;
    file.stream = streamOf(descriptor, "wb");
    if (!file.stream)
        file.code = lastSystemCode();
    return file;
}

bool isNameTaken(SystemCode code) noexcept {
    return code == EEXIST;
}

SystemCode followLinks(std::string& path) noexcept {
    return static_cast<SystemCode>(followTrustedLinks(path));
}

SystemCode takeAccess(std::FILE* from, std::FILE* to) noexcept {
    struct stat like = {};
    if (fstat(fileno(from), &like) != 0)
        return lastSystemCode();
    try {
        if (takeOwner(fileno(to), like) != 0 || takeAccessList(fileno(from), fileno(to)) != 0)
            return lastSystemCode();
        return codeOf(
            pastInterruptions([&] { return fchmod(fileno(to), like.st_mode & kPermissions); }));
    } catch (const std::bad_alloc&) {
        return outOfMemoryCode();
    }
}

SystemCode renameReplacing(const char* from, const char* to) noexcept {
    return codeOf(std::rename(from, to));
}

} // namespace platform
