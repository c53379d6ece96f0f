// Each form of each command that only looks or only prints, for what must hold for all of them.
#pragma once

#include "tests/tavctl/sample.h"

#include <string>
#include <vector>

namespace tavctltest {

// Without the options that say which machine is looked at. Each prints its result on standard
// output.
inline std::vector<std::string> looksAtMachine() {
    return {"list",
            "list -v",
            "list --json",
            "list --all",
            "list TAV1",
            "where 06:00.0",
            "where 06:00.0 --json",
            "tree",
            "tree -n",
            "tree TAV1",
            "tree --json",
            "tree -s 01:00.0",
            "tree --model TAV",
            "draw",
            "draw --format dot",
            "draw --all",
            "draw --front",
            "explain",
            "explain --json",
            "explain TAV1",
            "explain 'TAV-B3 Switch Box'",
            "describe 01:00.0",
            "describe 01:00.0 --json",
            "describe TAV1",
            "completion devices",
            "metrics",
            "metrics --openmetrics",
            "report",
            "record",
            "record --scrub",
            "names",
            "names list --json",
            "names list --stored",
            "names check --json",
            "names preview",
            "names preview --json",
            "monitor --for 0",
            "monitor --for 0 --json",
            "lint",
            "lint --json",
            "lint --against " + kSample};
}

// What is refused on the sample machine with its first names: it changes as little.
inline std::vector<std::string> refusedChanges() {
    return {"names rename TAV1 TAV2",
            "names rename TAV1 TAV9 --swap",
            "names rename TAV1 BOX1",
            "names rename TAV9 TAV10",
            "names forget TAV1",
            "names forget TAV1 --stored",
            "names forget TAV9 --force",
            "names restore /dev/null",
            "names backup zotavpci.ini/none"};
}

// What stores names there.
inline std::vector<std::string> changesNames() {
    return {"names rename TAV1 TAV7", "names rename TAV2 TAV3 --swap", "names forget TAV1 --force",
            "names restore /dev/null --force"};
}

inline std::vector<std::string> looksAtNothing() {
    std::vector<std::string> forms{
        "--help",          "--version",      "lint --rules",    "lint --rules --json",
        "completion bash", "completion zsh", "completion fish", "completion powershell"};
    for (const char* command : {"list", "where", "tree", "draw", "lint", "explain", "describe",
                                "record", "mock", "monitor", "metrics", "report", "names",
                                "names rename", "names forget", "names restore", "completion"})
        forms.push_back(std::string(command) + " --help");
    return forms;
}

} // namespace tavctltest
