#include "platform/entryType.h"

#include <sys/stat.h>

#include <cerrno>

namespace platform {

namespace {

using std::filesystem::file_type;

bool isNotFound(int code) {
    return code == ENOENT || code == ENOTDIR;
}

file_type typeOf(mode_t mode) {
    switch (mode & S_IFMT) {
    case S_IFREG:
        return file_type::regular;
    case S_IFDIR:
        return file_type::directory;
    case S_IFCHR:
        return file_type::character;
    case S_IFBLK:
        return file_type::block;
    case S_IFIFO:
        return file_type::fifo;
    case S_IFSOCK:
        return file_type::socket;
    default:
        return file_type::unknown;
    }
}

} // namespace

file_type typeOfEntry(const std::string& utf8Path) {
    struct stat status = {};
    if (stat(utf8Path.c_str(), &status) == 0)
        return typeOf(status.st_mode);
    return isNotFound(errno) ? file_type::not_found : file_type::none;
}

bool isEntryThere(const std::string& utf8Path) {
    struct stat status = {};
    return lstat(utf8Path.c_str(), &status) == 0 || !isNotFound(errno);
}

} // namespace platform
