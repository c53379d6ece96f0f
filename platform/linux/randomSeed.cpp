#include "platform/randomSeed.h"

#include "platform/guessedSeed.h"

#include <sys/random.h>

#include <cerrno>
#include <chrono>

namespace platform {

namespace {

template <typename Clock>
std::uint64_t ticks() noexcept {
    return static_cast<std::uint64_t>(Clock::now().time_since_epoch().count());
}

} // namespace

std::uint64_t randomSeed() noexcept {
    const int before = errno;
    std::uint64_t seed = 0;
    const bool given = getrandom(&seed, sizeof seed, GRND_NONBLOCK) == ssize_t{sizeof seed};
    errno = before;
    if (given)
        return seed;
    return guessedSeed(ticks<std::chrono::system_clock>(), ticks<std::chrono::steady_clock>());
}

} // namespace platform
