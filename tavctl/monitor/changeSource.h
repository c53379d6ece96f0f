// What monitor waits for, behind an interface, so that tests have a clock of their own.
#pragma once

#include "platform/deviceEvents.h"
#include "platform/earlyEnd.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace tavctl::monitor {

class ChangeSource {
public:
    using Woken = platform::DeviceEvents::Woken;
    using Milliseconds = std::chrono::milliseconds;
    using Time = std::chrono::steady_clock::time_point;

    virtual ~ChangeSource() = default;

    [[nodiscard]] virtual Time now() = 0;

    // As DeviceEvents::wait().
    virtual Woken wait(std::optional<Milliseconds> limit) = 0;

    // Whether changes are told of without being looked for.
    [[nodiscard]] virtual bool isWoken() = 0;
};

// What the system tells, or time alone.
class SystemSource : public ChangeSource {
public:
    explicit SystemSource(platform::DeviceEvents::Listening listening) : events_(listening) {}
    [[nodiscard]] Time now() override { return std::chrono::steady_clock::now(); }
    Woken wait(std::optional<Milliseconds> limit) override { return events_.wait(limit, stop_); }
    [[nodiscard]] bool isWoken() override { return events_.isListening(); }

private:
    platform::StopRequest stop_;
    platform::DeviceEvents events_;
};

// What changes about something that is cheaper to look at than the machine: its mark becomes
// another one. Looked at now and then, while the time passes by another source.
class PolledSource : public ChangeSource {
public:
    using Mark = std::function<std::string()>;

    // The mark is taken when the source is made, and from then on each time that so much has
    // passed, or that a wait ends.
    PolledSource(ChangeSource& time, Milliseconds period, Mark mark)
        : time_(time), period_(period), mark_(std::move(mark)), last_(mark_()) {}
    [[nodiscard]] Time now() override { return time_.now(); }
    Woken wait(std::optional<Milliseconds> limit) override;
    [[nodiscard]] bool isWoken() override { return false; }

private:
    ChangeSource& time_;
    Milliseconds period_;
    Mark mark_;
    std::string last_;
};

// How long changes are given to come to an end, as they come in bursts.
struct Settling {
    ChangeSource::Milliseconds quiet{300}; // so long without one
    ChangeSource::Milliseconds most{3000}; // but no longer than this in all
};

// To be called at the first change. Answers what to do then: to look (Woken::change), or to end.
ChangeSource::Woken settle(ChangeSource& source, const Settling& settling);

} // namespace tavctl::monitor
