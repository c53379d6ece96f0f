#include "zopcibrd/sessions.h"

#include <utility>

namespace zopcibrd {
namespace {

// Neither is ever a handle: the first is what callers clear their variables to, the second means
// "none".
constexpr std::uint32_t kCleared = 0;
constexpr std::uint32_t kNone = 0xFFFFFFFF;

} // namespace

std::uint32_t Sessions::open(pcibus::Bus bus) {
    auto shared = std::make_shared<const pcibus::Bus>(std::move(bus));
    const std::lock_guard lock(mutex_);
    // Handles are not used again soon, so that a stale one is noticed.
    std::uint32_t handle = last_;
    do {
        ++handle;
    } while (handle == kCleared || handle == kNone || open_.contains(handle));
    open_.emplace(handle, std::move(shared));
    last_ = handle;
    return handle;
}

bool Sessions::close(std::uint32_t session) {
    const std::lock_guard lock(mutex_);
    return open_.erase(session) != 0;
}

std::shared_ptr<const pcibus::Bus> Sessions::find(std::uint32_t session) {
    const std::lock_guard lock(mutex_);
    const auto found = open_.find(session);
    return found == open_.end() ? nullptr : found->second;
}

Sessions& sessions() {
    static Sessions instance;
    return instance;
}

} // namespace zopcibrd
