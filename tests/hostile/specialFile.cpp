#include "tests/hostile/specialFile.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

namespace testhostile {

namespace {

namespace fs = std::filesystem;

// Bound by its bare name, since a socket's path must be short.
void makeSocket(const fs::path& path) {
    const int made = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string name = path.filename().string();
    std::copy(name.begin(), name.end(), address.sun_path);
    const fs::path before = fs::current_path();
    fs::current_path(path.parent_path());
    const int bound = bind(made, reinterpret_cast<sockaddr*>(&address), sizeof address);
    fs::current_path(before);
    close(made);
    if (bound != 0)
        throw std::runtime_error("cannot make a socket at " + path.string());
}

// Where the links lead; empty for what is no link.
std::string target(Kind kind, const fs::path& path) {
    switch (kind) {
    case Kind::linkToItself:
        return path.filename().string();
    case Kind::linkToNull:
        return "/dev/null";
    case Kind::linkToZero:
        return "/dev/zero";
    case Kind::linkToFull:
        return "/dev/full";
    case Kind::linkToNowhere:
        return "nowhere/file";
    default:
        return {};
    }
}

} // namespace

void put(Kind kind, const fs::path& path) {
    fs::remove_all(path);
    if (kind == Kind::socket)
        makeSocket(path);
    else if (kind == Kind::folder)
        fs::create_directory(path);
    else if (kind != Kind::pipe)
        fs::create_symlink(target(kind, path), path);
    else if (mkfifo(path.c_str(), 0600) != 0)
        throw std::runtime_error("cannot make a pipe at " + path.string());
}

bool isStill(Kind kind, const fs::path& path) {
    const fs::file_status status = fs::symlink_status(path);
    switch (kind) {
    case Kind::pipe:
        return fs::is_fifo(status);
    case Kind::socket:
        return fs::is_socket(status);
    case Kind::folder:
        return fs::is_directory(status) && fs::is_empty(path);
    default:
        return fs::is_symlink(status) && fs::read_symlink(path) == target(kind, path);
    }
}

std::string nameOf(Kind kind) {
    constexpr const char* kNames[] = {"pipe",       "socket",     "folder",     "linkToItself",
                                      "linkToNull", "linkToZero", "linkToFull", "linkToNowhere"};
    return kNames[static_cast<std::size_t>(kind)];
}

std::string whyNoFile(Kind kind) {
    switch (kind) {
    case Kind::socket:
        return "No such device or address";
    case Kind::folder:
        return "Is a directory";
    case Kind::linkToItself:
        return "Too many levels of symbolic links";
    case Kind::linkToNowhere:
        return "No such file or directory";
    default:
        return "Not a regular file";
    }
}

} // namespace testhostile
