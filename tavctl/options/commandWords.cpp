#include "tavctl/options/commandWords.h"

#include <string_view>

namespace tavctl {

namespace {

// "{svg,dot}", as the parser writes what it accepts behind the name of a value.
std::vector<std::string> choicesOf(std::string_view typeName) {
    std::vector<std::string> choices;
    const std::size_t begin = typeName.find('{');
    const std::size_t end = typeName.find('}');
    if (begin == std::string_view::npos || end == std::string_view::npos)
        return choices;
    std::string_view list = typeName.substr(begin + 1, end - begin - 1);
    while (!list.empty()) {
        const std::size_t comma = std::min(list.find(','), list.size());
        choices.emplace_back(list.substr(0, comma));
        list.remove_prefix(std::min(comma + 1, list.size()));
    }
    return choices;
}

OptionWords::Value valueOf(const CLI::Option& option, const OptionWords& words) {
    if (option.get_items_expected_max() == 0)
        return OptionWords::Value::none;
    if (!words.choices.empty())
        return OptionWords::Value::choice;
    const std::string typeName = option.get_type_name();
    if (typeName.starts_with("DIR"))
        return OptionWords::Value::folder;
    for (const char* name : {"FILE", "PATH", "DUMP"}) {
        if (typeName.starts_with(name) || option.get_name().starts_with(name))
            return OptionWords::Value::file;
    }
    return OptionWords::Value::text;
}

} // namespace

CommandWords wordsOf(const CLI::App& app) {
    CommandWords words{app.get_name(), app.get_description(), {}, {}};
    for (const CLI::Option* option : app.get_options()) {
        OptionWords each;
        each.shortNames = option->get_snames();
        each.longNames = option->get_lnames();
        each.description = option->get_description();
        each.choices = choicesOf(option->get_type_name());
        each.value = valueOf(*option, each);
        words.options.push_back(std::move(each));
    }
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        words.commands.push_back(wordsOf(*command));
    return words;
}

} // namespace tavctl
