#include "tavctl/names/namesCommand.h"

#include "platform/earlyEnd.h"
#include "platform/entryType.h"
#include "platform/utf8Path.h"
#include "tavctl/bus/leftOutWords.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/host/namesBefore.h"
#include "tavctl/names/nameLoss.h"
#include "tavctl/names/nameReport.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/json.h"
#include "tavctl/words/print.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <optional>

namespace tavctl {

namespace {

namespace fs = std::filesystem;

struct NamesOptions;

struct NamesAction {
    CommandOptions word;
    ExitStatus (*run)(const NamesOptions&);
};

struct NamesOptions {
    CommonOptions common;
    bool verbose = false;
    bool stored = false;
    bool force = false;
    std::string file;
    std::string newDescriptions;
    std::string newDump;
    std::vector<NamesAction> actions; // none given: list
};

// Only a look at the bus needs a copy.
Names namesFor(const NamesOptions& options) {
    return options.stored ? Names::configured : Names::copied;
}

NameFile readStored(const fs::path& path) {
    const NameLock lock(path, NameLock::Purpose::reading);
    return NameFile(path, true);
}

// The devices, when the bus is looked at, with what was passed over in that.
struct Look {
    std::optional<Survey> survey;
    std::optional<pcibus::LeftOut> leftOut;
};

Look look(const HostSetup& setup) {
    Look seen{surveyDevices(setup), leftOutOfChosenBus()};
    tellLeftOut(seen.leftOut);
    return seen;
}

Look lookUnlessStored(const NamesOptions& options, const HostSetup& setup) {
    return options.stored ? Look() : look(setup);
}

void printJson(Json whole, const Look& seen) {
    if (seen.survey)
        whole.add("leftOut", leftOutJson(seen.leftOut));
    print(whole.line());
}

const Survey* pointerTo(const std::optional<Survey>& survey) {
    return survey ? &*survey : nullptr;
}

ExitStatus listNames(const NamesOptions& options) {
    const HostSetup setup(options.common, namesFor(options));
    const fs::path path = nameFilePath(setup);
    const NameFile file = readStored(path);
    const Look seen = lookUnlessStored(options, setup);
    if (options.common.json)
        printJson(namesAsJson(file, pointerTo(seen.survey)), seen);
    else if (file.entries().empty())
        complain(fmt::format("no names are stored in {}", platform::utf8Text(path)));
    else
        print(namesAsTable(file, pointerTo(seen.survey), options.verbose));
    return ExitStatus::done;
}

ExitStatus checkStored(const NamesOptions& options) {
    const HostSetup setup(options.common, namesFor(options));
    const fs::path path = nameFilePath(setup);
    const NameFile file = readStored(path);
    const Look seen = lookUnlessStored(options, setup);
    const auto problems = checkNames(file, pointerTo(seen.survey));
    if (options.common.json)
        printJson(problemsAsJson(problems, platform::utf8Text(path)), seen);
    else
        print(problemsAsText(problems, platform::utf8Text(path)));
    if (problems.empty() && !options.common.json)
        complain(fmt::format("no problem with {} names in {}", file.entries().size(),
                             platform::utf8Text(path)));
    return problems.empty() ? ExitStatus::done : ExitStatus::problemFound;
}

void report(const NamesOptions& options, const char* what, std::size_t count,
            const std::string& where) {
    if (options.common.json)
        print(Json{{what, count}}.line());
    else
        print(fmt::format("{} {}: {}\n", what, counted(count, "name"), where));
}

ExitStatus backUp(const NamesOptions& options) {
    const HostSetup setup(options.common);
    const fs::path path = nameFilePath(setup);
    if (!options.force && fs::exists(fs::file_status(platform::typeOfEntry(options.file))))
        throw FailureException({"back up terminal names",
                                options.file,
                                "the file exists; --force replaces it",
                                {},
                                {}});
    const NameLock lock(path, NameLock::Purpose::reading);
    const NameFile file(path, false);
    file.write(platform::utf8Path(options.file));
    report(options, "saved", file.entries().size(), options.file);
    return ExitStatus::done;
}

[[noreturn]] void refuseToRestore(const NamesOptions& options, const std::string& reason) {
    throw FailureException({"restore terminal names", options.file, reason, {}, {}},
                           ExitStatus::problemFound);
}

void requireNames(const NamesOptions& options, const NameFile& source) {
    const auto problems = checkNames(source, nullptr);
    complainInLines(problemsAsText(problems, options.file));
    if (!problems.empty())
        refuseToRestore(options, "these are not names as they are stored; --force takes them");
    if (source.entries().empty())
        refuseToRestore(options, "it has no names; --force restores it and forgets all of them");
}

// The devices whose names count, as far as they can be found out.
struct NamedDevices {
    std::optional<Survey> survey;
    std::string obstacle; // why every stored name counts; empty with a survey
};

NamedDevices namedDevices(const NamesOptions& options, const HostSetup& setup) {
    if (options.stored)
        return {{}, "the bus is not looked at"};
    try {
        return {look(setup).survey, {}};
    } catch (const FailureException& exception) {
        return {{}, fmt::format("the devices cannot be looked for ({})", exception.what())};
    }
}

// The stored names, for comparing; a file that holds none that can be read has none to lose.
NameFile storedIfReadable(const fs::path& path) {
    try {
        return {path, true};
    } catch (const FailureException& exception) {
        complain(exception.what());
        return {};
    }
}

void requireNoLoss(const NamesOptions& options, const NamedDevices& devices, const fs::path& path,
                   const NameFile& source) {
    const auto losses = lostNames(storedIfReadable(path), pointerTo(devices.survey), source);
    if (losses.empty())
        return;
    const std::string given = devices.obstacle.empty()
                                  ? std::string()
                                  : devices.obstacle + ", so every stored name counts: ";
    refuseToRestore(options, given + lossesAsText(losses) + "; --force restores it all the same");
}

ExitStatus restore(const NamesOptions& options) {
    const HostSetup setup(options.common);
    const fs::path path = nameFilePath(setup);
    const NameFile source(platform::utf8Path(options.file), false);
    if (!options.force)
        requireNames(options, source);
    // The search for devices takes turns with hosts by the lock, too.
    const NamedDevices devices = options.force ? NamedDevices() : namedDevices(options, setup);
    const NameLock lock(path, NameLock::Purpose::writing);
    if (source.isContentOf(path)) {
        complain(fmt::format("nothing to restore: {} holds these names already",
                             platform::utf8Text(path)));
        report(options, "restored", 0, platform::utf8Text(path));
        return ExitStatus::done;
    }
    if (!options.force)
        requireNoLoss(options, devices, path, source);
    {
        const platform::EarlyEndHeldBack untilWritten;
        keepNamesBefore(path);
        source.write(path);
    }
    report(options, "restored", source.entries().size(), platform::utf8Text(path));
    return ExitStatus::done;
}

ExitStatus undo(const NamesOptions& options) {
    const HostSetup setup(options.common);
    const fs::path path = nameFilePath(setup);
    const NameLock lock(path, NameLock::Purpose::writing);
    {
        const platform::EarlyEndHeldBack untilWritten;
        undoNames(path);
    }
    report(options, "restored", storedIfReadable(path).entries().size(), platform::utf8Text(path));
    return ExitStatus::done;
}

// What is found today; nothing, and a word about it, when it cannot be found out.
std::optional<Survey> surveyOfToday(const NamesOptions& options, const HostSetup& setup) {
    try {
        return surveyDevices(setup);
    } catch (const FailureException& exception) {
        if (!options.common.json)
            complain(fmt::format("what would be gone is not known: {}", exception.what()));
        return std::nullopt;
    }
}

ExitStatus preview(const NamesOptions& options) {
    CommonOptions changed = options.common;
    if (!options.newDescriptions.empty())
        changed.descriptions = options.newDescriptions;
    if (!options.newDump.empty())
        changed.dump = options.newDump;
    // Through both setups.
    const NamedDump kept(options.common.dump);
    const NamedDump newKept(options.newDump);
    const bool isChanged = !options.newDescriptions.empty() || !options.newDump.empty();

    auto setup = std::make_unique<HostSetup>(options.common, Names::copied);
    const fs::path path = nameFilePath(*setup);
    const NameFile file = readStored(path);
    const auto now = isChanged ? surveyOfToday(options, *setup) : std::nullopt;
    setup.reset();
    setup = std::make_unique<HostSetup>(changed, Names::copied);
    const Look then = look(*setup);
    const auto forecasts = forecastNames(file, pointerTo(now), *then.survey);

    if (options.common.json)
        printJson(forecastsAsJson(forecasts), then);
    else if (forecasts.empty())
        complain("no described device is present on this bus");
    else
        print(forecastsAsTable(forecasts, options.verbose));
    for (const NameForecast& forecast : forecasts) {
        if (forecast.change == NameForecast::Change::changes ||
            forecast.change == NameForecast::Change::gone)
            return ExitStatus::problemFound;
    }
    return ExitStatus::done;
}

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
    CommandOptions command = parser.command("names", "List, check and back up terminal names");
    command.flag("-v,--verbose", options->verbose, "Cut nothing to fit 80 columns");
    command.flag("--stored", options->stored, "Look at the stored names only, at no bus");
    options->common.addTo(command);
    command.footer("Writes: nothing, but for backup, restore and undo.\n"
                   "Example: tavctl names check");

    constexpr const char* kRestored = "the terminal names and zotavpci.ini.before";
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
    add("check", "Find duplicate, malformed and stale names", checkStored,
        "tavctl names check --json");
    addFile(
        add("backup", "Save the names in a file", backUp, "tavctl names backup names.ini", "FILE"),
        *options, ValueForm::newFile(), "File to save them in");
    addFile(add("restore", "Put back the names of a saved file", restore,
                "tavctl names restore names.ini", kRestored),
            *options, ValueForm::file(), "File that they were saved in");
    add("undo", "Take back what changed the names last", undo, "tavctl names undo", kRestored);
    CommandOptions change = add("preview", "Tell which names would stay, change or be new", preview,
                                "tavctl names preview --new-descriptions new");
    change.value("--new-descriptions", options->newDescriptions, ValueForm::folder(),
                 "Descriptions that are to take effect");
    change.value("--new-dump", options->newDump, ValueForm::file("PATH"),
                 "Recorded bus of the changed hardware");
    return makeCommand(command, std::move(options), runNames);
}

} // namespace tavctl
