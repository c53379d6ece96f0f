#include "platform/stream.h"

#include <cerrno>

namespace platform {

namespace {

// Whether the stream's error is an interruption; then it is taken back.
bool wasInterrupted(std::FILE* stream) noexcept {
    if (std::ferror(stream) == 0 || errno != EINTR)
        return false;
    std::clearerr(stream);
    return true;
}

// Transfers piece by piece; `some` transfers from an offset on and answers how much.
template <typename Some>
std::size_t transferAll(std::FILE* stream, std::size_t size, Some some) noexcept {
    std::size_t done = 0;
    do {
        errno = 0;
        done += some(done);
    } while (done < size && wasInterrupted(stream));
    return done;
}

} // namespace

std::size_t readStream(std::FILE* stream, char* to, std::size_t size) noexcept {
    return transferAll(stream, size, [&](std::size_t done) {
        return std::fread(to + done, 1, size - done, stream);
    });
}

std::size_t writeStream(std::FILE* stream, const char* from, std::size_t size) noexcept {
    return transferAll(stream, size, [&](std::size_t done) {
        return std::fwrite(from + done, 1, size - done, stream);
    });
}

bool flushStream(std::FILE* stream) noexcept {
    do {
        errno = 0;
        if (std::fflush(stream) == 0)
            return true;
    } while (wasInterrupted(stream));
    return false;
}

bool closeStream(std::FILE* stream) noexcept {
    const bool isFlushed = flushStream(stream);
    const int error = errno;
    errno = 0;
    const bool isClosed = std::fclose(stream) == 0 || errno == EINTR;
    if (!isFlushed)
        errno = error;
    return isFlushed && isClosed;
}

} // namespace platform
