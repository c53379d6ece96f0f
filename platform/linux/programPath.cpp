#include "platform/programPath.h"

#include "platform/directorySearch.h"

#include <unistd.h>

#include <climits>

namespace platform {

std::string programFolder() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    if (length <= 0)
        return {};
    const std::string whole(path, static_cast<std::size_t>(length));
    return whole.substr(0, lastSeparator(whole) + 1);
}

} // namespace platform
