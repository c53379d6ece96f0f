#include "tests/support/effort.h"

#include <cstdlib>
#include <iostream>

namespace testsupport {

bool isSanitized() {
#if defined(TAV_SANITIZED)
    return true;
#else
    return false;
#endif
}

std::uint64_t effort(std::uint64_t inEveryRun, std::uint64_t inLongRuns) {
    const char* asked = std::getenv("TAV_EFFORT");
    return asked != nullptr && std::string_view(asked) == "long" ? inLongRuns : inEveryRun;
}

void figure(std::uint64_t count, std::string_view what) {
    std::cout << "figure: " << count << ' ' << what << std::endl;
}

} // namespace testsupport
