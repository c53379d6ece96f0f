// Work on many things at once whose results are wanted in order, one by one: at no time are there
// more of them than a few for each processor, however many things there are.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace tavctl {

// Calls `make` for each index below `count`, on as many threads as the system has processors, and
// `take`, in the calling thread, for each index in order when its `make` has returned. `make` is
// never more than `window` indices ahead of `take`. Where the system has no thread left everything
// is done in the calling thread. What either raises ends the work and is raised again.
void workInOrder(std::size_t count, std::size_t window,
                 const std::function<void(std::size_t)>& make,
                 const std::function<void(std::size_t)>& take);

// How far results may be ahead.
[[nodiscard]] std::size_t usualWindow();

// The same for a `make` that returns what `take` is given.
template <typename Result>
void resultsInOrder(std::size_t count, const std::function<Result(std::size_t)>& make,
                    const std::function<void(std::size_t, Result)>& take) {
    std::vector<std::optional<Result>> results(usualWindow());
    workInOrder(
        count, results.size(),
        [&](std::size_t index) { results[index % results.size()] = make(index); },
        [&](std::size_t index) {
            std::optional<Result>& result = results[index % results.size()];
            Result taken = std::move(*result);
            result.reset();
            take(index, std::move(taken));
        });
}

} // namespace tavctl
