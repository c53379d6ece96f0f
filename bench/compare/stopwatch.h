// Times on a machine that does other work too: every contender runs in turn, several times, and
// each one's best counts.
#pragma once

#include <algorithm>
#include <chrono>
#include <limits>

namespace bench {

template <class Work>
double secondsOf(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

class Best {
public:
    void take(double value) { best_ = std::min(best_, value); }
    double value() const { return best_; }

private:
    double best_ = std::numeric_limits<double>::max();
};

} // namespace bench
