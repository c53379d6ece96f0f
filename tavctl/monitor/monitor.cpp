#include "tavctl/monitor/monitor.h"

#include "tavctl/monitor/difference.h"
#include "tavctl/words/failure.h"

#include <algorithm>
#include <utility>

namespace tavctl::monitor {

using Milliseconds = ChangeSource::Milliseconds;

// Until the next look is due, or the end. Nothing: only a change or a request ends the wait.
std::optional<Milliseconds> Monitor::limit() {
    std::optional<ChangeSource::Time> next;
    const auto notAfter = [&](ChangeSource::Time time) {
        next = std::min(next.value_or(time), time);
    };
    // One that was told of changes and is not any more looks for itself.
    if (!failure_.empty() || (wasWoken_ && !source_.isWoken()))
        notAfter(lastLook_ + rhythm_.retry);
    if (rhythm_.every)
        notAfter(lastLook_ + *rhythm_.every);
    if (rhythm_.length)
        notAfter(start_ + *rhythm_.length);
    if (!next)
        return std::nullopt;
    return std::max(std::chrono::ceil<Milliseconds>(*next - source_.now()), Milliseconds(0));
}

bool Monitor::isOver() {
    return rhythm_.length && source_.now() >= start_ + *rhythm_.length;
}

MachineState Monitor::look() {
    ++looks_;
    MachineState state = look_();
    lastLook_ = source_.now();
    return state;
}

void Monitor::tellWatching() {
    Event event;
    event.kind = EventKind::watching;
    event.isWoken = wasWoken_;
    event.every = rhythm_.toldEvery ? rhythm_.toldEvery : rhythm_.every;
    tell_({event});
}

void Monitor::tellChanges(const MachineState& now) {
    std::vector<Event> events = differences(state_, now);
    if (!failure_.empty()) {
        failure_.clear();
        Event works;
        works.kind = EventKind::lookWorks;
        events.insert(events.begin(), std::move(works));
    }
    if (!events.empty())
        tell_(events);
}

// Once for as long as it is the same.
void Monitor::tellFailure(std::string reason) {
    lastLook_ = source_.now();
    if (reason == failure_)
        return;
    failure_ = std::move(reason);
    Event event;
    event.kind = EventKind::lookFailed;
    event.reason = failure_;
    tell_({event});
}

bool Monitor::follow() {
    // What changes while it is looked at is looked at again, but not for ever.
    constexpr int kMostLooks = 5;
    for (int i = 0; i < kMostLooks; ++i) {
        std::optional<MachineState> now;
        std::string reason;
        try {
            now = look();
        } catch (const FailureException& exception) {
            reason = exception.what();
        }
        const Woken woken = source_.wait(Milliseconds(0));
        if (woken == Woken::change && i + 1 < kMostLooks) {
            if (settle(source_, rhythm_.settling) != Woken::change)
                return false;
            continue;
        }
        if (now) {
            tellChanges(*now);
            state_ = std::move(*now);
        } else {
            tellFailure(std::move(reason));
        }
        return woken == Woken::change || woken == Woken::time;
    }
    return true;
}

void Monitor::run() {
    start_ = source_.now();
    wasWoken_ = source_.isWoken();
    state_ = look();
    tell_(initialEvents(state_));
    tellWatching();
    for (bool goesOn = true; goesOn && !isOver();) {
        const Woken woken = source_.wait(limit());
        goesOn = woken == Woken::change || woken == Woken::time;
        if (woken == Woken::change)
            goesOn = settle(source_, rhythm_.settling) == Woken::change;
        if (goesOn && (woken == Woken::change || !isOver()))
            goesOn = follow();
    }
    Event event;
    event.looks = looks_;
    tell_({event});
}

} // namespace tavctl::monitor
