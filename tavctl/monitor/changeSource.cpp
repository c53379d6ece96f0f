#include "tavctl/monitor/changeSource.h"

#include <algorithm>

namespace tavctl::monitor {

using Woken = ChangeSource::Woken;

namespace {

ChangeSource::Milliseconds until(ChangeSource::Time end, ChangeSource& source) {
    return std::chrono::ceil<ChangeSource::Milliseconds>(end - source.now());
}

} // namespace

Woken PolledSource::wait(std::optional<Milliseconds> limit) {
    const Time end = limit ? now() + *limit : Time::max();
    for (;;) {
        const Milliseconds step = std::min(period_, until(end, time_));
        const Woken woken = time_.wait(std::max(step, Milliseconds(0)));
        if (woken != Woken::time)
            return woken;
        std::string mark = mark_();
        if (mark != last_) {
            last_ = std::move(mark);
            return Woken::change;
        }
        if (now() >= end)
            return Woken::time;
    }
}

Woken settle(ChangeSource& source, const Settling& settling) {
    const ChangeSource::Time end = source.now() + settling.most;
    for (;;) {
        const ChangeSource::Milliseconds left = until(end, source);
        if (left <= ChangeSource::Milliseconds(0))
            return Woken::change;
        const Woken woken = source.wait(std::min(settling.quiet, left));
        if (woken == Woken::time)
            return Woken::change;
        if (woken != Woken::change)
            return woken;
    }
}

} // namespace tavctl::monitor
