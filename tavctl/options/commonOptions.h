// The options that every command takes that looks at devices.
#pragma once

#include "tavctl/options/options.h"

#include <string>

namespace tavctl {

struct CommonOptions {
    std::string plugin;       // empty: beside the program, then the system's search
    std::string dump;         // empty: the machine's own bus
    std::string descriptions; // empty: the configured "Path"
    std::string state;        // empty: the configured "ConfigPath"
    bool json = false;
    bool debug = false; // with the whole error record

    // Adds --plugin, --dump, --descriptions, --state and --debug to a command.
    void addBusTo(CommandOptions command);

    // The same and --json, for a command that prints facts.
    void addTo(CommandOptions command);
};

} // namespace tavctl
