// Signals interrupt calls of the system; what was to be done is done all the same. Private to this
// folder.
#pragma once

#include <cerrno>
#include <type_traits>

namespace platform {

// Makes the call again for as long as a signal interrupts it. The call answers -1 or null, with
// errno set, when it fails. Not for close(2): what it was to close is gone after an interruption.
template <typename Call>
auto pastInterruptions(Call call) noexcept {
    for (;;) {
        const auto result = call();
        bool failed = false;
        if constexpr (std::is_pointer_v<std::remove_const_t<decltype(result)>>)
            failed = result == nullptr;
        else
            failed = result < 0;
        if (!failed || errno != EINTR)
            return result;
    }
}

} // namespace platform
