// tavctl, the plug-in's host on the command line.
#include "platform/commandLine.h"
#include "tavctl/commonOptions.h"
#include "tavctl/describeCommand.h"
#include "tavctl/exitStatus.h"
#include "tavctl/explainCommand.h"
#include "tavctl/failure.h"
#include "tavctl/lintCommand.h"
#include "tavctl/listCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace {

using tavctl::ExitStatus;

ExitStatus run(std::vector<std::string> words) {
    CLI::App app("Lists TAV hardware as a host sees it through the plug-in.", "tavctl");
    app.set_version_flag("--version", TAVCTL_VERSION);
    app.require_subcommand(1);
    app.footer("Exit status: 0 done, 1 problem found in the input, 2 wrong usage,\n"
               "3 the plug-in or the system failed.");

    tavctl::CommonOptions options;
    CLI::App* list = app.add_subcommand("list", "List the devices with their ports");
    options.addTo(*list);
    list->footer("Example: tavctl list --dump samples/switchboxes.dump "
                 "--descriptions descriptions --state /tmp/names");
    const tavctl::Command commands[] = {tavctl::addLintCommand(app), tavctl::addExplainCommand(app),
                                        tavctl::addDescribeCommand(app)};

    try {
        // Without the program's name, and the first word last.
        words.erase(words.begin());
        std::reverse(words.begin(), words.end());
        app.parse(std::move(words));
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? ExitStatus::done : ExitStatus::wrongUsage;
    }
    for (const tavctl::Command& command : commands) {
        if (!command.app->parsed())
            continue;
        try {
            return command.run();
        } catch (const tavctl::FailureException& exception) {
            tavctl::printFailure(exception.failure(), command.wantsJson());
            return exception.exitStatus();
        }
    }
    try {
        return tavctl::runList(options);
    } catch (const tavctl::FailureException& exception) {
        tavctl::printFailure(exception.failure(), options.json);
        return ExitStatus::failed;
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        platform::prepareOutput();
        return static_cast<int>(run(platform::commandLine(argc, argv)));
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "tavctl: %s\n", exception.what());
    } catch (...) {
        std::fputs("tavctl: unknown failure\n", stderr);
    }
    return static_cast<int>(ExitStatus::failed);
}
