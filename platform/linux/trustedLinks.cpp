#include "platform/linux/trustedLinks.h"

#include "platform/linux/descriptor.h"
#include "platform/linux/interruption.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <string_view>

namespace platform {

namespace {

constexpr int kMostLinks = 40; // as many as the kernel follows

bool isTrusted(const struct stat& link) noexcept {
    return link.st_uid == 0 || link.st_uid == geteuid();
}

// What a link says, empty when there is no telling.
std::string targetOf(const Descriptor& link, const struct stat& status) {
    std::string target(static_cast<std::size_t>(status.st_size) + 1, '\0');
    const ssize_t length = readlinkat(link.number(), "", target.data(), target.size());
    target.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return target;
}

enum class Step { isLink, isEnd, failed };

// The link itself is held open while it is looked at, so that nobody can put another in its place.
Step followOne(std::string& path) {
    const Descriptor link(
        pastInterruptions([&] { return open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC); }));
    if (link.number() < 0)
        return errno == ENOENT ? Step::isEnd : Step::failed;
    struct stat status = {};
    if (fstat(link.number(), &status) != 0)
        return Step::failed;
    if (!S_ISLNK(status.st_mode))
        return Step::isEnd;
    errno = EACCES;
    if (!isTrusted(status))
        return Step::failed;
    const std::string target = targetOf(link, status);
    if (target.empty())
        return Step::failed;
    if (target.starts_with('/'))
        path = target;
    else
        path.replace(path.rfind('/') + 1, std::string::npos, target);
    return Step::isLink;
}

} // namespace

int followTrustedLinks(std::string& path) noexcept {
    try {
        for (int links = 0; links < kMostLinks; ++links) {
            const Step step = followOne(path);
            if (step != Step::isLink)
                return step == Step::isEnd ? 0 : errno;
        }
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
    return ELOOP;
}

} // namespace platform
