// The command line's words as the scripts for shells need them.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace tavctl {

// An option, or an argument without a name.
struct OptionWords {
    enum class Value { none, file, folder, choice, text };
    std::vector<std::string> shortNames; // without dashes
    std::vector<std::string> longNames;
    std::string description;
    Value value = Value::none;
    std::vector<std::string> choices;

    [[nodiscard]] bool isArgument() const { return shortNames.empty() && longNames.empty(); }
};

struct CommandWords {
    std::string name;
    std::string description;
    std::vector<OptionWords> options;   // of this command alone
    std::vector<CommandWords> commands; // within it; these take its options too
};

CommandWords wordsOf(const CLI::App& app);

} // namespace tavctl
