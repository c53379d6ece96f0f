#include "tavctl/options/misuse.h"

#include "tavctl/words/nearestName.h"

#include <fmt/core.h>

#include <algorithm>
#include <string_view>

namespace tavctl {

namespace {

bool contains(const std::vector<std::string>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::string withSuggestion(std::string reason, std::string_view word,
                           const std::vector<std::string>& names) {
    const std::string nearest = nearestName(word, names);
    if (!nearest.empty())
        reason += fmt::format("; did you mean \"{}\"?", nearest);
    return reason;
}

} // namespace

Misuse findMisuse(const CommandWords& whole, const std::vector<std::string>& words,
                  const std::string& parserSentence) {
    const CommandWords* where = &whole;
    std::string path = whole.name;
    std::vector<std::string> commands = commandNames(whole);
    std::vector<std::string> options = dashedNames(whole);
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string_view word = words[i];
        const std::string name(word.substr(0, word.find('=')));
        if (name.starts_with("--") && name.size() > 2 && !contains(options, name))
            return {name, withSuggestion("unknown option", name, options), path, commands};
        if (word.starts_with('-') || commands.empty())
            continue;
        const auto command = std::find_if(where->commands.begin(), where->commands.end(),
                                          [&](const auto& each) { return each.name == word; });
        if (command == where->commands.end()) {
            if (where != &whole && i > 2)
                continue; // the value of an option before the word
            return {std::string(word), withSuggestion("unknown command", word, commands), path,
                    commands};
        }
        where = &*command;
        path += fmt::format(" {}", where->name);
        commands = commandNames(*where);
        const auto more = dashedNames(*where);
        options.insert(options.end(), more.begin(), more.end());
    }
    if (words.size() < 2)
        return {{}, "no command given", path, commands};
    return {{}, parserSentence, path, commands};
}

} // namespace tavctl
