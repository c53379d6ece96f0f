#include "platform/randomSeed.h"

#include "platform/guessedSeed.h"
#include "platform/windows/systemHeaders.h"

#include <ntsecapi.h>

namespace platform {

namespace {

std::uint64_t timeOfDay() noexcept {
    FILETIME time = {};
    GetSystemTimeAsFileTime(&time);
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

std::uint64_t ticks() noexcept {
    LARGE_INTEGER count = {};
    QueryPerformanceCounter(&count);
    return static_cast<std::uint64_t>(count.QuadPart);
}

} // namespace

std::uint64_t randomSeed() noexcept {
    const DWORD before = GetLastError();
    std::uint64_t seed = 0;
    const bool given = RtlGenRandom(&seed, sizeof seed) != 0;
    SetLastError(before);
    return given ? seed : guessedSeed(timeOfDay(), ticks());
}

} // namespace platform
