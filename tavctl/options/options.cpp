#include "tavctl/options/options.h"

#include "platform/filePattern.h"
#include "tavctl/words/failure.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <iterator>
#include <list>
#include <map>
#include <sstream>
#include <type_traits>
#include <utility>

namespace tavctl {

namespace {

constexpr std::size_t kHelpColumn = 26;

constexpr const char* kEmptyValue = "the value is empty";

// A script whose variable is not set must not get what it would get without the option.
std::string isNotEmpty(const std::string& value) {
    return value.empty() ? kEmptyValue : std::string();
}

// Says which words there are where the description does not.
CLI::Validator isOneOf(const std::vector<std::string>& words, const std::string& description) {
    CLI::IsMember check(words);
    const bool isTold = std::all_of(words.begin(), words.end(), [&](const std::string& word) {
        return description.find(word) != std::string::npos;
    });
    return isTold ? check.description("") : check;
}

// The same of the two ends.
CLI::Validator isBetween(int least, int most, const std::string& description) {
    CLI::Range check(least, most);
    const bool isTold = description.find(fmt::format("({}-{})", least, most)) != std::string::npos;
    return isTold ? check.description("") : check;
}

[[noreturn]] void refuse(const std::string& pattern, std::string reason) {
    throw FailureException({"find files", pattern, std::move(reason), {}, {}},
                           ExitStatus::wrongUsage);
}

// At least one.
std::vector<std::string> filesOf(const std::string& word) {
    auto files = platform::filesOfPattern(word);
    if (files.empty())
        refuse(word, "no file matches this pattern");
    return files;
}

// A help that is longer than a screen does without blank lines, the last ones first. What options
// exclude is told to whom it concerns, and leaves the help its columns.
class HelpFormatter : public CLI::Formatter {
public:
    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override {
        constexpr std::ptrdiff_t kScreen = 24;
        std::string help = CLI::Formatter::make_help(app, std::move(name), mode);
        auto lines = std::count(help.begin(), help.end(), '\n');
        for (auto blank = help.rfind("\n\n"); lines > kScreen && blank != std::string::npos;
             blank = help.rfind("\n\n", blank), --lines)
            help.erase(blank, 1);
        return help;
    }

    std::string make_option_opts(const CLI::Option* option) const override {
        const std::string text = CLI::Formatter::make_option_opts(option);
        return text.substr(0, text.find(" Excludes:"));
    }
};

} // namespace

ValueForm ValueForm::text(std::string name) {
    return {std::move(name), OptionWords::Value::text, {}};
}

ValueForm ValueForm::file(std::string name) {
    return {std::move(name), OptionWords::Value::file, {}, true};
}

ValueForm ValueForm::newFile(std::string name) {
    return {std::move(name), OptionWords::Value::file, {}};
}

ValueForm ValueForm::folder(std::string name) {
    return {std::move(name), OptionWords::Value::folder, {}};
}

ValueForm ValueForm::device(std::string name) {
    return {std::move(name), OptionWords::Value::device, {}};
}

ValueForm ValueForm::choice(std::string name, std::vector<std::string> choices) {
    return {std::move(name), OptionWords::Value::choice, std::move(choices)};
}

// A command, or the program as a whole, with what the parser does not know of its options.
class CommandOptions::Node {
public:
    explicit Node(CLI::App& app) : app_(app) {}

    [[nodiscard]] CLI::App& app() { return app_; }
    [[nodiscard]] const CLI::App& app() const { return app_; }

    template <typename Value>
    CLI::Option* addOption(const std::string& names, Value& value, const ValueForm& form,
                           const std::string& description) {
        return addNamed(names, value, form, description)->type_name(form.name);
    }

    // The name stands in place of dashes and of a value's name.
    template <typename Value>
    CLI::Option* addArgument(Value& value, const ValueForm& form, const std::string& description) {
        return addNamed(form.name, value, form, description)->type_name("");
    }

    Node& addCommand(const std::string& word, const std::string& description) {
        return within_.emplace_back(*app_.add_subcommand(word, description));
    }

    // Of the commands that were given.
    void findFiles() {
        for (const auto& find : finders_)
            find();
        for (Node& command : within_) {
            if (command.app_.parsed())
                command.findFiles();
        }
    }

    [[nodiscard]] CommandWords words() const {
        CommandWords words{app_.get_name(), app_.get_description(), {}, {}};
        for (const CLI::Option* option : std::as_const(app_).get_options())
            words.options.push_back(wordsOf(*option));
        for (const Node& command : within_)
            words.commands.push_back(command.words());
        return words;
    }

private:
    template <typename Value>
    CLI::Option* addNamed(const std::string& names, Value& value, const ValueForm& form,
                          const std::string& description) {
        CLI::Option* const option = app_.add_option(names, value, description);
        option->check(isNotEmpty);
        if (form.kind == OptionWords::Value::choice)
            option->check(isOneOf(form.choices, description));
        if constexpr (!std::is_same_v<Value, int>) { // numbers are no files
            if (form.isThere)
                addFinder(option, value);
        }
        forms_.emplace(option, form);
        return option;
    }

    void addFinder(const CLI::Option* option, std::string& file) {
        finders_.emplace_back([option, &file] {
            if (option->count() == 0)
                return;
            const auto files = filesOf(file);
            if (files.size() > 1)
                refuse(file,
                       fmt::format("{} files match this pattern; one is wanted", files.size()));
            file = files.front();
        });
    }

    void addFinder(const CLI::Option* option, std::vector<std::string>& files) {
        finders_.emplace_back([option, &files] {
            if (option->count() == 0)
                return;
            std::vector<std::string> all;
            for (const std::string& word : files) {
                const auto more = filesOf(word);
                all.insert(all.end(), more.begin(), more.end());
            }
            files = std::move(all);
        });
    }

    [[nodiscard]] OptionWords wordsOf(const CLI::Option& option) const {
        OptionWords words;
        words.shortNames = option.get_snames();
        words.longNames = option.get_lnames();
        words.description = option.get_description();
        const auto form = forms_.find(&option);
        if (form != forms_.end()) {
            words.value = form->second.kind;
            words.choices = form->second.choices;
        }
        return words;
    }

    CLI::App& app_;
    std::map<const CLI::Option*, ValueForm> forms_; // of those that take a value
    std::vector<std::function<void()>> finders_;    // of the files that they name
    std::list<Node> within_;
};

void CommandOptions::flag(const std::string& names, bool& isSet, const std::string& description) {
    node_->app().add_flag(names, isSet, description);
}

void CommandOptions::value(const std::string& names, std::string& value, const ValueForm& form,
                           const std::string& description) {
    node_->addOption(names, value, form, description);
}

void CommandOptions::number(const std::string& names, int& value, const std::string& valueName,
                            int least, int most, const std::string& description) {
    node_->addOption(names, value, ValueForm::text(valueName), description)
        ->check(isBetween(least, most, description));
}

void CommandOptions::values(const std::string& names, std::vector<std::string>& values,
                            const ValueForm& form, const std::string& description) {
    node_->addOption(names, values, form, description);
}

void CommandOptions::argument(std::string& value, const ValueForm& form,
                              const std::string& description) {
    node_->addArgument(value, form, description)->required();
}

void CommandOptions::optionalArgument(std::string& value, const ValueForm& form,
                                      const std::string& description) {
    node_->addArgument(value, form, description);
}

void CommandOptions::arguments(std::vector<std::string>& values, const ValueForm& form,
                               const std::string& description) {
    node_->addArgument(values, form, description);
}

void CommandOptions::needs(const std::string& option, const std::string& other) {
    CLI::App& app = node_->app();
    app.get_option(option)->needs(app.get_option(other));
}

void CommandOptions::excludes(const std::string& option, const std::string& other) {
    CLI::App& app = node_->app();
    app.get_option(option)->excludes(app.get_option(other));
}

void CommandOptions::footer(const std::string& text) {
    node_->app().footer(text);
}

CommandOptions CommandOptions::action(const std::string& word, const std::string& description) {
    node_->app().require_subcommand(0, 1);
    Node& action = node_->addCommand(word, description);
    action.app().fallthrough();
    return CommandOptions(action);
}

bool CommandOptions::isGiven() const {
    return node_->app().parsed();
}

struct OptionParser::Whole {
    CLI::App app;
    CommandOptions::Node node{app};
};

OptionParser::OptionParser(const std::string& program, const std::string& description,
                           const std::string& version)
    : whole_(std::make_unique<Whole>()) {
    CLI::App& app = whole_->app;
    app.name(program);
    app.description(description);
    app.set_version_flag("--version", version, "Print the version and exit");
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.formatter(std::make_shared<HelpFormatter>());
    app.get_formatter()->column_width(kHelpColumn);
    app.require_subcommand(1);
}

OptionParser::~OptionParser() = default;

void OptionParser::footer(const std::string& text) {
    whole_->app.footer(text);
}

CommandOptions OptionParser::command(const std::string& word, const std::string& description) {
    return CommandOptions(whole_->node.addCommand(word, description));
}

ParsedLine OptionParser::parse(const std::vector<std::string>& words) {
    CLI::App& app = whole_->app;
    // The parser takes the next word for the value of such an option.
    for (const std::string& word : words) {
        if (word == "--")
            break;
        if (word.starts_with("--") && word.ends_with('='))
            return {ParsedLine::Kind::misuse, word.substr(0, word.size() - 1) + ": " + kEmptyValue};
    }
    try {
        // Without the program's name, and the first word last.
        app.parse(std::vector<std::string>(words.rbegin(), std::prev(words.rend())));
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success))
            return {ParsedLine::Kind::misuse, error.what()};
        std::ostringstream answer;
        app.exit(error, answer);
        return {ParsedLine::Kind::question, answer.str()};
    }
    return {ParsedLine::Kind::command, {}};
}

void OptionParser::findFiles() {
    whole_->node.findFiles();
}

CommandWords OptionParser::words() const {
    return whole_->node.words();
}

} // namespace tavctl
