#include "platform/programPath.h"

#include "platform/directorySearch.h"

#include <unistd.h>

namespace platform {

std::string programFolder() {
    std::string whole(256, '\0');
    for (;;) {
        const ssize_t length = readlink("/proc/self/exe", whole.data(), whole.size());
        if (length <= 0)
            return {};
        const auto used = static_cast<std::size_t>(length);
        const bool isWhole = used < whole.size();
        whole.resize(isWhole ? used : whole.size() * 2);
        if (isWhole)
            break;
    }
    return whole.substr(0, lastSeparator(whole) + 1);
}

} // namespace platform
