// Lets a host program run with a configuration of its own, for itself and for what it loads, in
// place of the machine's. Nothing outside the process changes and nothing is left behind.
#pragma once

#include "platform/systemCode.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace platform {

class HostConfiguration {
public:
    using Values = std::vector<std::pair<std::string, std::string>>; // name, text

    // Puts `values` in force below key `key` until the object is destroyed. One object at a time.
    HostConfiguration(const char* key, const Values& values);
    ~HostConfiguration();
    HostConfiguration(const HostConfiguration&) = delete;
    HostConfiguration& operator=(const HostConfiguration&) = delete;

    // 0, or why the values could not be put in force.
    [[nodiscard]] SystemCode code() const noexcept { return code_; }

private:
    struct State;
    std::unique_ptr<State> state_;
    SystemCode code_ = kNoSystemError;
};

// Makes this process, and what it loads, see the recorded bus at `path` instead of the machine's.
SystemCode useRecordedBus(const std::string& path);

} // namespace platform
