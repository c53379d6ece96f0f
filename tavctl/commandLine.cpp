#include "tavctl/commandLine.h"

#include "tavctl/completion/completionCommand.h"
#include "tavctl/describe/describeCommand.h"
#include "tavctl/draw/drawCommand.h"
#include "tavctl/explain/explainCommand.h"
#include "tavctl/lint/lintCommand.h"
#include "tavctl/list/listCommand.h"
#include "tavctl/names/namesCommand.h"
#include "tavctl/record/recordCommand.h"
#include "tavctl/tree/treeCommand.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/nearestName.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string>
#include <string_view>

namespace tavctl {

namespace {

struct KnownCommand {
    std::string_view name;
    Command (*add)(CLI::App&);
};

// In the order in which they are told.
constexpr KnownCommand kCommands[] = {
    {"list", addListCommand},
    {"tree", addTreeCommand},
    {"draw", addDrawCommand},
    {"lint", addLintCommand},
    {"explain", addExplainCommand},
    {"describe", addDescribeCommand},
    {"record", addRecordCommand},
    {"names", addNamesCommand},
    {"completion", addCompletionCommand},
};

constexpr std::size_t kHelpColumn = 26;

bool contains(const std::vector<std::string>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// What was wrong with a command line: the word, and the sentence that tells.
struct Misuse {
    std::string word;
    std::string reason;
    const CLI::App* where = nullptr; // the command whose help says more
};

std::string withSuggestion(std::string reason, std::string_view word,
                           const std::vector<std::string>& names) {
    const std::string nearest = nearestName(word, names);
    if (!nearest.empty())
        reason.append("; did you mean \"").append(nearest).append("\"?");
    return reason;
}

// The parser's own message names what it stumbled over, but not what was meant; for the two common
// slips, a wrong command and a wrong option, this finds out.
Misuse findMisuse(const CLI::App& app, const CLI::ParseError& error,
                  const std::vector<std::string>& words) {
    const CLI::App* where = &app;
    std::vector<std::string> options = optionNames(app);
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string_view word = words[i];
        const std::string name(word.substr(0, word.find('=')));
        if (name.starts_with("--") && name.size() > 2 && !contains(options, name))
            return {name, withSuggestion("unknown option", name, options), where};
        if (word.starts_with('-') || commandNames(*where).empty())
            continue;
        const auto commands = commandNames(*where);
        if (!contains(commands, word)) {
            if (where != &app && i > 2)
                continue; // the value of an option before the word
            return {std::string(word), withSuggestion("unknown command", word, commands), where};
        }
        where = where->get_subcommand(std::string(word));
        const auto more = optionNames(*where);
        options.insert(options.end(), more.begin(), more.end());
    }
    if (words.size() < 2)
        return {{}, "no command given", where};
    return {{}, error.what(), where};
}

} // namespace

std::vector<std::string> commandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    return names;
}

std::vector<std::string> optionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_snames())
            names.push_back("-" + name);
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    }
    return names;
}

CommandLine::CommandLine(std::string_view only)
    : app_(std::make_unique<CLI::App>(
          "Sees, checks and explains TAV hardware as a host sees it through the plug-in.",
          "tavctl")) {
    app_->set_version_flag("--version", TAVCTL_VERSION, "Print the version and exit");
    app_->set_help_flag("-h,--help", "Print this help and exit");
    app_->get_formatter()->column_width(kHelpColumn);
    app_->require_subcommand(1);
    app_->footer("\"tavctl COMMAND --help\" and \"man tavctl-COMMAND\" say more.\n"
                 "Exit status: 0 done, 1 problem found in the input, 2 wrong usage,\n"
                 "3 the plug-in or the system failed.\n"
                 "Example: tavctl list -v");
    for (const KnownCommand& known : kCommands) {
        if (only.empty() || known.name == only)
            commands_.push_back(known.add(*app_));
    }
}

ExitStatus runCommandLine(const std::vector<std::string>& words) {
    const auto isNamed = [&](const KnownCommand& known) {
        return words.size() > 1 && words[1] == known.name;
    };
    const auto named = std::find_if(std::begin(kCommands), std::end(kCommands), isNamed);
    // The options of every command are a third of what it takes to start.
    CommandLine line(named == std::end(kCommands) ? std::string_view() : named->name);
    return line.run(words);
}

ExitStatus CommandLine::run(const std::vector<std::string>& words) {
    try {
        // Without the program's name, and the first word last.
        app_->parse(std::vector<std::string>(words.rbegin(), std::prev(words.rend())));
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success))
            return refuse(error, words);
        app_->exit(error); // prints the help or the version that was asked for
        return ExitStatus::done;
    }
    return runParsed();
}

ExitStatus CommandLine::runParsed() {
    const auto command = std::find_if(commands_.begin(), commands_.end(),
                                      [](const Command& each) { return each.app->parsed(); });
    if (command == commands_.end())
        return ExitStatus::wrongUsage;
    try {
        return command->run();
    } catch (const FailureException& exception) {
        printFailure(exception.failure(), command->wantsJson());
        return exception.exitStatus();
    }
}

ExitStatus CommandLine::refuse(const CLI::ParseError& error,
                               const std::vector<std::string>& words) const {
    const Misuse misuse = findMisuse(*app_, error, words);
    const bool json = contains(words, "--json");
    printFailure({"read the command line", misuse.word, misuse.reason, {}, {}}, json);
    if (json)
        return ExitStatus::wrongUsage;
    std::string command = "tavctl";
    if (misuse.where != app_.get()) {
        const CLI::App* const parent = misuse.where->get_parent();
        if (parent != app_.get())
            command.append(" ").append(parent->get_name());
        command.append(" ").append(misuse.where->get_name());
    }
    const auto commands = commandNames(*misuse.where);
    if (!commands.empty()) {
        std::string list;
        for (const std::string& name : commands)
            list.append(list.empty() ? "" : ", ").append(name);
        std::fprintf(stderr, "Commands: %s\n", list.c_str());
    }
    std::fprintf(stderr, "\"%s --help\" says more.\n", command.c_str());
    return ExitStatus::wrongUsage;
}

} // namespace tavctl
