#include "platform/inputFile.h"

#include "platform/linux/interruption.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace platform {

namespace {

constexpr int kPatienceMilliseconds = 2000;
constexpr int kWithoutEnd = -1;

} // namespace

struct InputFile::File {
    explicit File(const char* path) noexcept
        : descriptor(pastInterruptions(
              [&] { return open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); })) {
        struct stat status = {};
        if (descriptor < 0 || fstat(descriptor, &status) != 0)
            error = errno;
        isNewPipe = error == 0 && S_ISFIFO(status.st_mode);
    }
    ~File() {
        if (descriptor >= 0)
            close(descriptor);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    // Until there is something to read, or nobody left to write. False when that takes too long.
    bool wait(int milliseconds) const noexcept {
        pollfd one{descriptor, POLLIN, 0};
        return pastInterruptions([&] { return poll(&one, 1, milliseconds); }) > 0;
    }

    int descriptor;
    int error = 0;
    bool isNewPipe = false; // and no sign of a writer has been seen
};

InputFile::InputFile(const std::string& utf8Path)
    : file_(std::make_unique<File>(utf8Path.c_str())) {}

InputFile::~InputFile() = default;

int InputFile::read(std::span<char> bytes, std::size_t& size) {
    size = 0;
    if (file_->error != 0)
        return file_->error;
    while (size < bytes.size()) {
        const ssize_t got = ::read(file_->descriptor, bytes.data() + size, bytes.size() - size);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0 && errno != EAGAIN)
            return errno;
        // A pipe without a writer reads as if it were at its end.
        const bool maybeTooSoon = got == 0 && file_->isNewPipe;
        file_->isNewPipe = false;
        if (got > 0)
            size += static_cast<std::size_t>(got);
        else if (got < 0)
            file_->wait(kWithoutEnd);
        else if (!maybeTooSoon)
            break;
        else if (!file_->wait(kPatienceMilliseconds))
            return EPIPE;
    }
    return 0;
}

} // namespace platform
