#include "platform/randomSeed.h"

#include "platform/guessedSeed.h"

#include <sys/random.h>

#include <cerrno>

namespace platform {

std::uint64_t randomSeed() noexcept {
    const int before = errno;
    std::uint64_t seed = 0;
    const bool given = getrandom(&seed, sizeof seed, GRND_NONBLOCK) == ssize_t{sizeof seed};
    errno = before;
    return given ? seed : guessedSeed();
}

} // namespace platform
