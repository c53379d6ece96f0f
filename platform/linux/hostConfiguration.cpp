// The host's own configuration is a configuration file that exists only in memory, named to this
// process alone.
#include "platform/hostConfiguration.h"

#include "platform/configurationText.h"
#include "platform/linux/environmentVariable.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>

namespace platform {

namespace {

SystemCode writeWhole(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written < 0 && errno != EINTR)
            return lastSystemCode();
        if (written > 0)
            text.remove_prefix(static_cast<std::size_t>(written));
    }
    return kNoSystemError;
}

} // namespace

struct HostConfiguration::State {
    State() : previous(kConfigurationVariable) {}
    ~State() {
        if (descriptor >= 0)
            close(descriptor);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    SystemCode start(const std::string& text) {
        descriptor = memfd_create("tav-manager.conf", MFD_CLOEXEC);
        if (descriptor < 0)
            return lastSystemCode();
        const SystemCode written = writeWhole(descriptor, text);
        if (written != kNoSystemError)
            return written;
        // Each opening of this name starts at the beginning of the text.
        return setTrustedVariable(kConfigurationVariable,
                                  "/proc/self/fd/" + std::to_string(descriptor));
    }

    VariableKeeper previous;
    int descriptor = -1;
};

HostConfiguration::HostConfiguration(const char* key, const Values& values) {
    std::string text;
    if (!writeConfigurationText(key, values, text)) {
        code_ = EINVAL;
        return;
    }
    state_ = std::make_unique<State>();
    code_ = state_->start(text);
    if (code_ != kNoSystemError)
        state_.reset();
}

HostConfiguration::~HostConfiguration() = default;

// An empty name would mean the live bus.
SystemCode useRecordedBus(const std::string& path) {
    return path.empty() ? SystemCode{ENOENT} : setTrustedVariable(kRecordedBusVariable, path);
}

} // namespace platform
