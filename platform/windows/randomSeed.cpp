#include "platform/randomSeed.h"

#include "platform/guessedSeed.h"
#include "platform/windows/systemHeaders.h"

#include <ntsecapi.h>

namespace platform {

std::uint64_t randomSeed() noexcept {
    const DWORD before = GetLastError();
    std::uint64_t seed = 0;
    const bool given = RtlGenRandom(&seed, sizeof seed) != 0;
    SetLastError(before);
    return given ? seed : guessedSeed();
}

} // namespace platform
