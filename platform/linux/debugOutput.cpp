#include "platform/debugOutput.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

namespace platform {

// Past the buffers of the C library, whose flushes could fall in the middle of a line. Whoever
// writes debug output must not find the error changed that it is about to report.
void writeDebugOutput(const char* text) noexcept {
    const int error = errno;
    std::size_t length = std::strlen(text);
    while (length != 0) {
        const ssize_t written = write(STDERR_FILENO, text, length);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            break;
        text += written;
        length -= static_cast<std::size_t>(written);
    }
    errno = error;
}

} // namespace platform
