#include "platform/deviceEvents.h"

#include "platform/linux/stopDescriptor.h"
#include "platform/linux/udevLibrary.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace platform {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// The service that names devices tells of each when it is done with it. Where it does not run, as
// in a rescue system, the kernel's own messages do.
const char* messageGroup() noexcept {
    return access("/run/udev/control", F_OK) == 0 ? "udev" : "kernel";
}

// What poll(2) takes: -1 for no limit.
int untilThen(const std::optional<Clock::time_point>& end) noexcept {
    if (!end)
        return -1;
    constexpr milliseconds kLongest = std::chrono::hours(1);
    const auto left = std::chrono::ceil<milliseconds>(*end - Clock::now());
    return static_cast<int>(std::clamp(left, milliseconds(0), kLongest).count());
}

// A reader that has gone shows at once at a pipe; elsewhere the next line finds out.
int pipeOfOutput() noexcept {
    struct stat status = {};
    return fstat(STDOUT_FILENO, &status) == 0 && S_ISFIFO(status.st_mode) ? STDOUT_FILENO : -1;
}

} // namespace

struct DeviceEvents::State {
    State() = default;
    ~State() { stopListening(); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    void startListening() {
        if (!udev.load())
            return;
        context = udev.makeContext();
        monitor = context == nullptr ? nullptr : udev.makeMonitor(context, messageGroup());
        if (monitor == nullptr || udev.addFilter(monitor, "pci", nullptr) < 0 ||
            udev.listen(monitor) < 0)
            stopListening();
    }

    void stopListening() noexcept {
        if (monitor != nullptr)
            udev.dropMonitor(monitor);
        if (context != nullptr)
            udev.dropContext(context);
        monitor = nullptr;
        context = nullptr;
    }

    [[nodiscard]] int descriptor() const {
        return monitor == nullptr ? -1 : udev.descriptorOf(monitor);
    }

    // Whether there was any that concerns PCI.
    [[nodiscard]] bool takeMessages() const {
        for (bool any = false;; any = true) {
            errno = 0;
            UdevDevice* const device = udev.receive(monitor);
            if (device != nullptr)
                udev.dropDevice(device);
            else if (errno != ENOBUFS) // some were lost
                return any;
        }
    }

    UdevLibrary udev;
    UdevContext* context = nullptr;
    UdevMonitor* monitor = nullptr;
};

DeviceEvents::DeviceEvents(Listening listening) : state_(std::make_unique<State>()) {
    if (listening == Listening::yes)
        state_->startListening();
}

DeviceEvents::~DeviceEvents() = default;

bool DeviceEvents::isListening() const noexcept {
    return state_->monitor != nullptr;
}

DeviceEvents::Woken DeviceEvents::wait(std::optional<milliseconds> limit, const StopRequest& stop) {
    const auto end = limit ? std::optional(Clock::now() + *limit) : std::nullopt;
    constexpr short kBroken = POLLERR | POLLHUP | POLLNVAL;
    for (;;) {
        std::array<pollfd, 3> awaited{{{stopDescriptor(), POLLIN, 0},
                                       {state_->descriptor(), POLLIN, 0},
                                       {pipeOfOutput(), 0, 0}}};
        const int ready = poll(awaited.data(), awaited.size(), untilThen(end));
        if (stop.isMade())
            return Woken::stop;
        if (ready > 0 && (awaited[2].revents & POLLERR) != 0)
            return Woken::unread;
        if (ready > 0 && awaited[1].revents != 0) {
            const bool any = state_->takeMessages();
            const bool isGone =
                !any && (awaited[1].revents & POLLIN) == 0 && (awaited[1].revents & kBroken) != 0;
            if (isGone)
                state_->stopListening();
            if (any || isGone)
                return Woken::change;
        }
        if (end && Clock::now() >= *end)
            return Woken::time;
    }
}

} // namespace platform
