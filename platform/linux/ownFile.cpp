#include "platform/linux/ownFile.h"

#include <unistd.h>

#include <cerrno>

namespace platform {

Stream streamOf(int descriptor, const char* mode) noexcept {
    if (descriptor < 0)
        return nullptr;
    Stream stream(fdopen(descriptor, mode));
    if (!stream) {
        const int error = errno;
        close(descriptor);
        errno = error;
    }
    return stream;
}

} // namespace platform
