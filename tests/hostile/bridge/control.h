// What a test tells the bridge library that answers at random, and what it learns from it. The test
// reaches it through one more export of the library.
#pragma once

#include <cstdint>
#include <string>

namespace hostilebridge {

// Where the library lies; elsewhere the library behind answers.
enum class Manner { everywhere, oneFunction, once };

struct Control {
    // Everything that the library answers follows from this and from the calls since it was set.
    std::uint64_t random = 0;

    // Chosen anew by begin(), with what it takes: of a hundred answers, how many are lies; the
    // function that lies half of the time, by its place in the table; the call that is answered
    // with a lie.
    Manner manner = Manner::everywhere;
    unsigned lies = 0;
    unsigned liar = 0;
    std::uint64_t lyingCall = 0;

    // Whether the call before announced a length at random.
    bool announcedFalsely = false;

    std::uint64_t calls = 0; // since begin()
    // A call beyond this many ends the process, with the seed on standard error.
    std::uint64_t mostCalls = 0;
    std::uint64_t seed = 0;

    std::int32_t sessionStatus = 0; // the last answer to OpenSession
    std::string behind;             // path of the bridge library that answers honestly

    void begin(std::uint64_t newSeed) {
        seed = newSeed;
        random = newSeed;
        calls = 0;
        announcedFalsely = false;
        // Most runs have to get far to meet anything.
        constexpr unsigned kLies[] = {1, 3, 10, 50, 100};
        constexpr unsigned kFunctions = 18;
        constexpr unsigned kCallsOfAnHonestRun = 70;
        manner = static_cast<Manner>(newSeed % 3);
        const std::uint64_t choice = newSeed / 3;
        lies = kLies[choice % (sizeof kLies / sizeof *kLies)];
        liar = static_cast<unsigned>(choice % kFunctions);
        lyingCall = 1 + choice % kCallsOfAnHonestRun;
    }
};

using ControlAccess = Control* (*)();
inline constexpr const char* kControlSymbol = "HostileBridge_Control";

} // namespace hostilebridge
