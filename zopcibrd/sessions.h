// The open sessions of this process. Any thread may use any of them; a session that one thread
// closes stays readable for those that are looking at it.
#pragma once

#include "pcibus/bus.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace zopcibrd {

class Sessions {
public:
    // Answers the new session's handle. Raises std::bad_alloc.
    std::uint32_t open(pcibus::Bus bus);

    // False when there is no such session.
    bool close(std::uint32_t session);

    // Null when there is no such session.
    std::shared_ptr<const pcibus::Bus> find(std::uint32_t session);

private:
    std::mutex mutex_;
    std::unordered_map<std::uint32_t, std::shared_ptr<const pcibus::Bus>> open_;
    std::uint32_t last_ = 0;
};

Sessions& sessions();

} // namespace zopcibrd
