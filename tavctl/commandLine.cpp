#include "tavctl/commandLine.h"

#include "platform/manualPages.h"
#include "tavctl/completion/completionCommand.h"
#include "tavctl/describe/describeCommand.h"
#include "tavctl/draw/drawCommand.h"
#include "tavctl/explain/explainCommand.h"
#include "tavctl/lint/lintCommand.h"
#include "tavctl/list/listCommand.h"
#include "tavctl/metrics/metricsCommand.h"
#include "tavctl/mock/mockCommand.h"
#include "tavctl/monitor/monitorCommand.h"
#include "tavctl/names/namesCommand.h"
#include "tavctl/options/command.h"
#include "tavctl/options/misuse.h"
#include "tavctl/record/recordCommand.h"
#include "tavctl/report/reportCommand.h"
#include "tavctl/tree/treeCommand.h"
#include "tavctl/where/whereCommand.h"
#include "tavctl/words/document.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/print.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <span>
#include <string>
#include <string_view>

namespace tavctl {

namespace {

struct KnownCommand {
    std::string_view name;
    Command (*add)(OptionParser&);
};

// In the order in which they are told.
constexpr KnownCommand kCommands[] = {
    {"list", addListCommand},
    {"where", addWhereCommand},
    {"tree", addTreeCommand},
    {"draw", addDrawCommand},
    {"metrics", addMetricsCommand},
    {"report", addReportCommand},
    {"lint", addLintCommand},
    {"explain", addExplainCommand},
    {"describe", addDescribeCommand},
    {"record", addRecordCommand},
    {"mock", addMockCommand},
    {"names", addNamesCommand},
    {"monitor", addMonitorCommand},
    {"completion",
     [](OptionParser& parser) { return addCompletionCommand(parser, commandLineWords); }},
};

bool asksForVersion(const std::vector<std::string>& words) {
    return words.size() == 2 && words[1] == "--version";
}

// "--version" and "--json", either first. The latter is an option of commands otherwise.
bool asksForVersionDocument(const std::vector<std::string>& words) {
    return words.size() == 3 && std::count(words.begin() + 1, words.end(), "--version") == 1 &&
           std::count(words.begin() + 1, words.end(), "--json") == 1;
}

std::string versionDocument() {
    Json whole = newDocument();
    whole.add("program", "tavctl");
    whole.add("programVersion", TAVCTL_VERSION);
    return whole.line();
}

// The commands whose options it takes to understand this line. Those of all of them would be half
// of what the program does on its way to an answer.
std::span<const KnownCommand> commandsFor(const std::vector<std::string>& words) {
    if (asksForVersion(words) || asksForVersionDocument(words))
        return {};
    const auto isNamed = [&](const KnownCommand& known) {
        return words.size() > 1 && words[1] == known.name;
    };
    const auto* const named = std::find_if(std::begin(kCommands), std::end(kCommands), isNamed);
    if (named == std::end(kCommands))
        return kCommands;
    return {named, 1};
}

class CommandLine {
public:
    explicit CommandLine(std::span<const KnownCommand> commands = kCommands)
        : parser_("tavctl",
                  "Sees, checks and explains TAV hardware as a host sees it through the plug-in.",
                  "tavctl " TAVCTL_VERSION) {
        parser_.footer(
            (platform::hasManualPages()
                 ? "\"tavctl COMMAND --help\" and \"man tavctl-COMMAND\" say more.\n"
                 : "\"tavctl COMMAND --help\" says more.\n") +
            std::string("Exit status: 0 done, 1 problem found in the input, 2 wrong usage,\n"
                        "3 the plug-in or the system failed.\n"
                        "Example: tavctl list -v"));
        for (const KnownCommand& known : commands)
            commands_.push_back(known.add(parser_));
    }

    [[nodiscard]] CommandWords words() const { return parser_.words(); }

    ExitStatus run(const std::vector<std::string>& words) {
        if (asksForVersionDocument(words))
            return answer(versionDocument());
        const ParsedLine line = parser_.parse(words);
        switch (line.kind) {
        case ParsedLine::Kind::misuse:
            return refuse(words, line.text);
        case ParsedLine::Kind::question:
            return answer(line.text);
        case ParsedLine::Kind::command:
            break;
        }
        return runParsed();
    }

private:
    static ExitStatus answer(const std::string& text) {
        try {
            print(text);
            return ExitStatus::done;
        } catch (const FailureException& exception) {
            printFailure(exception.failure());
            return exception.exitStatus();
        }
    }

    ExitStatus runParsed() {
        const auto command =
            std::find_if(commands_.begin(), commands_.end(),
                         [](const Command& each) { return each.options.isGiven(); });
        if (command == commands_.end())
            return ExitStatus::wrongUsage;
        try {
            parser_.findFiles();
            return command->run();
        } catch (const FailureException& exception) {
            printFailure(exception.failure(), command->failureForm());
            return exception.exitStatus();
        }
    }

    [[nodiscard]] ExitStatus refuse(const std::vector<std::string>& words,
                                    const std::string& parserSentence) const {
        const Misuse misuse = findMisuse(parser_.words(), words, parserSentence);
        const bool json = std::find(words.begin(), words.end(), "--json") != words.end();
        printFailure({"read the command line", misuse.word, misuse.reason, {}, {}}, {json, false});
        if (json)
            return ExitStatus::wrongUsage;
        if (!misuse.commands.empty()) {
            complainInLines(fmt::format("Commands: {}\n", separated(misuse.commands, ", ")));
        }
        complainInLines(fmt::format("\"{} --help\" says more.\n", misuse.command));
        return ExitStatus::wrongUsage;
    }

    OptionParser parser_;
    std::vector<Command> commands_;
};

} // namespace

ExitStatus runCommandLine(const std::vector<std::string>& words) {
    return CommandLine(commandsFor(words)).run(words);
}

CommandWords commandLineWords() {
    return CommandLine().words();
}

} // namespace tavctl
