// Stands for libudev: what is told is what a test writes into the pipe that FAKE_UDEV_PIPE names, a
// letter each, "d" for a device and "l" for messages that were lost. It ends when the test closes
// the pipe. What is listened to is written into the file of FAKE_UDEV_LOG.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace {

int source = -1;
int thing = 0;

void log(const char* text) {
    if (const char* const file = std::getenv("FAKE_UDEV_LOG")) {
        if (std::FILE* const stream = std::fopen(file, "a")) {
            std::fprintf(stream, "%s\n", text);
            std::fclose(stream);
        }
    }
}

} // namespace

extern "C" {

void* udev_new() {
    return &thing;
}

void* udev_unref(void*) {
    log("given up");
    return nullptr;
}

void* udev_monitor_new_from_netlink(void*, const char* group) {
    log(group);
    return &thing;
}

void* udev_monitor_unref(void*) {
    close(source);
    return nullptr;
}

int udev_monitor_filter_add_match_subsystem_devtype(void*, const char* subsystem,
                                                    const char* deviceType) {
    log(deviceType == nullptr ? subsystem : "of one type");
    return 0;
}

int udev_monitor_enable_receiving(void*) {
    const char* const pipe = std::getenv("FAKE_UDEV_PIPE");
    source = pipe == nullptr ? -1 : open(pipe, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    return source < 0 ? -ENOENT : 0;
}

int udev_monitor_get_fd(void*) {
    return source;
}

void* udev_monitor_receive_device(void*) {
    char letter = 0;
    errno = EAGAIN;
    if (read(source, &letter, 1) != 1)
        return nullptr;
    if (letter == 'd')
        return &thing;
    errno = letter == 'l' ? ENOBUFS : EAGAIN;
    return nullptr;
}

void* udev_device_unref(void*) {
    return nullptr;
}

} // extern "C"
