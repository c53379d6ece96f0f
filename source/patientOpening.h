// Opening a file that another process may hold open for itself alone for a moment: an opening that
// is refused for that reason is repeated a few times.
#pragma once

#include "platform/systemCode.h"

#include <chrono>

namespace nZoTavManagerPciPlugin_15_0 {

inline constexpr int kOpenAttempts = 3;
inline constexpr std::chrono::milliseconds kOpenRetryDelay{250};

// `open` answers the system's code for one attempt, `isHeldByAnother` tells whether a code is that
// refusal, and `pause` is given the delay between two attempts. Answers the last attempt's code.
template <typename Open, typename IsHeldByAnother, typename Pause>
platform::SystemCode openPatiently(Open open, IsHeldByAnother isHeldByAnother, Pause pause) {
    platform::SystemCode code = open();
    for (int attempt = 1; attempt < kOpenAttempts && isHeldByAnother(code); ++attempt) {
        pause(kOpenRetryDelay);
        code = open();
    }
    return code;
}

} // namespace nZoTavManagerPciPlugin_15_0
