// The watch itself: looks when there is reason to, and tells what has changed.
#pragma once

#include "tavctl/monitor/changeSource.h"
#include "tavctl/monitor/event.h"
#include "tavctl/view/machineState.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tavctl::monitor {

// When a watch looks.
struct Rhythm {
    std::optional<std::chrono::seconds> every = {}; // so often although nothing was told
    std::chrono::seconds retry{5}; // after a look that failed, and where the system tells no more
    std::optional<std::chrono::seconds> length = {}; // of the watch; nothing: for good
    // How often people are told that it looks, where the source does that by itself.
    std::optional<std::chrono::seconds> toldEvery = {};
    Settling settling = {};
};

class Monitor {
public:
    // A look raises FailureException where what is there cannot be told.
    using Look = std::function<MachineState()>;
    using Tell = std::function<void(const std::vector<Event>&)>;

    Monitor(ChangeSource& source, Look look, Tell tell, const Rhythm& rhythm)
        : source_(source), look_(std::move(look)), tell_(std::move(tell)), rhythm_(rhythm) {}

    // Tells the state, then every change, until the end of the watch or a request to end. Raises
    // what the first look raises.
    void run();

    // How many looks there were.
    [[nodiscard]] std::size_t looks() const { return looks_; }

private:
    using Woken = ChangeSource::Woken;

    [[nodiscard]] std::optional<ChangeSource::Milliseconds> limit();
    [[nodiscard]] bool isOver();
    MachineState look();
    // When the machine may have changed; answers whether to go on.
    bool follow();
    void tellChanges(const MachineState& now);
    void tellFailure(std::string reason);
    void tellWatching();

    ChangeSource& source_;
    Look look_;
    Tell tell_;
    Rhythm rhythm_;
    MachineState state_;
    std::string failure_; // of the last look; empty: it worked
    std::size_t looks_ = 0;
    bool wasWoken_ = false; // at the beginning
    ChangeSource::Time start_;
    ChangeSource::Time lastLook_;
};

} // namespace tavctl::monitor
