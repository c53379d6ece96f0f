// One piece of work for each of many recordings.
#pragma once

#include "tavctl/recordings/recording.h"
#include "tavctl/words/orderedWork.h"
#include "tavctl/words/progress.h"

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tavctl {

// Makes a result of each recording, on every processor, and hands the results over in order, as
// resultsInOrder() does; few of them are there at a time. Shows a person who waits how far the work
// named `what` is; `take` hides it while it writes. `make` is called in several threads at a time.
template <typename Result>
void resultsOf(const std::vector<Recording>& recordings, std::string what,
               const std::function<Result(const Recording&)>& make,
               const std::function<void(const Recording&, Result, Progress&)>& take) {
    Progress progress(std::move(what), recordings.size());
    resultsInOrder<Result>(
        recordings.size(), [&](std::size_t index) { return make(recordings[index]); },
        [&](std::size_t index, Result result) {
            progress.step();
            take(recordings[index], std::move(result), progress);
        });
}

} // namespace tavctl
