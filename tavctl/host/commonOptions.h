// The options that every command takes, and what they change for this process.
#pragma once

#include "platform/hostConfiguration.h"

#include <memory>
#include <string>

namespace CLI {
class App;
}

namespace tavctl {

struct CommonOptions {
    std::string plugin;       // empty: beside the program, then the system's search
    std::string dump;         // empty: the machine's own bus
    std::string descriptions; // empty: the configured "Path"
    std::string state;        // empty: the configured "ConfigPath"
    bool json = false;

    // Adds --plugin, --dump, --descriptions, --state and --json to a command.
    void addTo(CLI::App& command);
};

// Puts the options into force for this process and what it loads. Must live as long as the plug-in
// is used. Raises FailureException.
class HostSetup {
public:
    explicit HostSetup(const CommonOptions& options);

private:
    std::unique_ptr<platform::HostConfiguration> configuration_;
};

} // namespace tavctl
