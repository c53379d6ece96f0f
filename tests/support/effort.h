// How far tests of reliability go, and the figures that they leave behind: a short way that every
// run takes, and a long one (`make soak`), asked for with TAV_EFFORT=long in the environment.
#pragma once

#include <cstdint>
#include <string_view>

namespace testsupport {

// Whether this program is built with the address sanitizer, which takes memory of its own, and some
// five times the time wherever it starts other programs that are.
[[nodiscard]] bool isSanitized();

// How often to do something: inLongRuns where the long way is asked for, else inEveryRun.
[[nodiscard]] std::uint64_t effort(std::uint64_t inEveryRun, std::uint64_t inLongRuns);

// Prints one line that docs/reliability.md can quote: "figure: COUNT WHAT".
void figure(std::uint64_t count, std::string_view what);

} // namespace testsupport
