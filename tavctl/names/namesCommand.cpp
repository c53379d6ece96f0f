#include "tavctl/names/namesCommand.h"

#include "tavctl/names/namesChange.h"
#include "tavctl/names/namesLooks.h"
#include "tavctl/names/namesOptions.h"
#include "tavctl/names/savedNames.h"

#include <fmt/core.h>

#include <memory>

namespace tavctl {

namespace {

ExitStatus runNames(const NamesOptions& options) {
    for (const NamesAction& action : options.actions) {
        if (action.word.isGiven())
            return action.run(options);
    }
    return listNames(options);
}

void addFile(CommandOptions action, NamesOptions& options, const ValueForm& form,
             const char* what) {
    action.argument(options.file, form, what);
    action.flag("--force", options.force, "Do so in spite of what speaks against it");
}

} // namespace

Command addNamesCommand(OptionParser& parser) {
    auto options = std::make_shared<NamesOptions>();
    CommandOptions command =
        parser.command("names", "List, check, change and back up terminal names");
    command.flag("-v,--verbose", options->verbose, "Cut nothing to fit 80 columns");
    command.flag("--stored", options->stored, "Look at the stored names only, at no bus");
    options->common.addTo(command);
    command.footer("Writes: nothing, but for rename, forget, backup, restore and undo.\n"
                   "Example: tavctl names check");

    constexpr const char* kNamesAndBefore = "the terminal names and zotavpci.ini.before";
    const auto add = [&](const char* word, const char* what, ExitStatus (*run)(const NamesOptions&),
                         const char* example, const char* writes = "nothing") {
        CommandOptions action = command.action(word, what);
        action.footer(fmt::format("\"tavctl names --help\" tells the options of all.\n"
                                  "Writes: {}.\nExample: {}",
                                  writes, example));
        options->actions.push_back({action, run});
        return action;
    };
    add("list", "List the stored names (as without a word)", listNames,
        "tavctl names list --stored");
    add("check", "Find duplicate, malformed and stale names", checkStoredNames,
        "tavctl names check --json");
    CommandOptions rename = add("rename", "Give a device another name with the same base",
                                renameName, "tavctl names rename TAV1 TAV7", kNamesAndBefore);
    rename.argument(options->name, ValueForm::text("OLD"), "Name that is stored");
    rename.argument(options->newName, ValueForm::text("NEW"), "Name that it becomes");
    rename.flag("--swap", options->swap, "Let two stored names change places");
    CommandOptions forget = add("forget", "Free the name of a device that is gone", forgetName,
                                "tavctl names forget TAV2", kNamesAndBefore);
    forget.argument(options->name, ValueForm::text("NAME"), "Name that is stored");
    forget.flag("--force", options->force, "Also one whose device is present");
    addFile(add("backup", "Save the names in a file", backUpNames, "tavctl names backup names.ini",
                "FILE"),
            *options, ValueForm::newFile(), "File to save them in");
    addFile(add("restore", "Put back the names of a saved file", restoreNames,
                "tavctl names restore names.ini", kNamesAndBefore),
            *options, ValueForm::file(), "File that they were saved in");
    add("undo", "Take back what changed the names last", undoLastChange, "tavctl names undo",
        kNamesAndBefore);
    CommandOptions change = add("preview", "Tell which names would stay, change or be new",
                                previewNames, "tavctl names preview --new-descriptions new");
    change.value("--new-descriptions", options->newDescriptions, ValueForm::folder(),
                 "Descriptions that are to take effect");
    change.value("--new-dump", options->newDump, ValueForm::file("PATH"),
                 "Recorded bus of the changed hardware");
    return makeCommand(command, std::move(options), runNames);
}

} // namespace tavctl
