// Waiting until the system tells that something has changed about the machine's PCI devices: one
// was plugged in, pulled out, or got or lost its driver.
#pragma once

#include "platform/earlyEnd.h"

#include <chrono>
#include <memory>
#include <optional>

namespace platform {

class DeviceEvents {
public:
    enum class Listening { yes, no };

    enum class Woken {
        change, // the system told of one, or of so many that it lost some
        time,   // the limit is reached
        stop,   // a request to end
        unread  // standard output is a pipe whose reader has gone
    };

    // Listens from here on, so that nothing is missed that happens before the first wait. With
    // Listening::no it only waits.
    explicit DeviceEvents(Listening listening);
    ~DeviceEvents();
    DeviceEvents(const DeviceEvents&) = delete;
    DeviceEvents& operator=(const DeviceEvents&) = delete;

    // Whether the system tells: it may have no service for that, and may stop telling.
    [[nodiscard]] bool isListening() const noexcept;

    // Waits for whatever comes first, at no cost; without a limit for as long as it takes. All that
    // the system has told by then is one change.
    Woken wait(std::optional<std::chrono::milliseconds> limit, const StopRequest& stop);

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace platform
