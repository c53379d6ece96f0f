// The words of a command line: what scripts for shells are made from, and what a slip is measured
// by.
#pragma once

#include <string>
#include <vector>

namespace tavctl {

// An option, or an argument without a name.
struct OptionWords {
    enum class Value { none, file, folder, device, choice, text };
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

// "-o" and "--output", the short ones first; none for an argument.
std::vector<std::string> dashedNames(const OptionWords& option);

// Of the command's own options, and of the commands within it.
std::vector<std::string> dashedNames(const CommandWords& command);
std::vector<std::string> commandNames(const CommandWords& command);

} // namespace tavctl
