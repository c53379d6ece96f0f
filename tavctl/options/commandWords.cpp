#include "tavctl/options/commandWords.h"

#include <fmt/core.h>

namespace tavctl {

std::vector<std::string> dashedNames(const OptionWords& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.shortNames)
        names.push_back(fmt::format("-{}", name));
    for (const std::string& name : option.longNames)
        names.push_back(fmt::format("--{}", name));
    return names;
}

std::vector<std::string> dashedNames(const CommandWords& command) {
    std::vector<std::string> names;
    for (const OptionWords& option : command.options) {
        const auto more = dashedNames(option);
        names.insert(names.end(), more.begin(), more.end());
    }
    return names;
}

std::vector<std::string> commandNames(const CommandWords& command) {
    std::vector<std::string> names;
    for (const CommandWords& each : command.commands)
        names.push_back(each.name);
    return names;
}

} // namespace tavctl
