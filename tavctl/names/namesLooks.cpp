#include "tavctl/names/namesLooks.h"

#include "platform/utf8Path.h"
#include "tavctl/bus/leftOutWords.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/names/collectionPreview.h"
#include "tavctl/names/nameReport.h"
#include "tavctl/names/namedDevices.h"
#include "tavctl/recordings/recording.h"
#include "tavctl/words/document.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/json.h"
#include "tavctl/words/print.h"

#include <fmt/core.h>

#include <memory>
#include <optional>

namespace tavctl {

namespace {

namespace fs = std::filesystem;

// Only a look at the bus needs a copy.
Names namesFor(const NamesOptions& options) {
    return options.stored ? Names::configured : Names::copied;
}

NameFile readStored(const fs::path& path) {
    const NameLock lock(path, NameLock::Purpose::reading);
    return NameFile(path, true);
}

Look lookUnlessStored(const NamesOptions& options, const HostSetup& setup) {
    return options.stored ? Look() : lookAtBus(setup);
}

// What was passed over is null where the bus was not looked at.
void printJson(const char* what, Json list, const Look& seen) {
    Json whole = newDocument();
    whole.add("leftOut", seen.survey ? leftOutJson(seen.leftOut) : Json(nullptr));
    whole.add(what, std::move(list));
    print(whole.line());
}

const Survey* pointerTo(const std::optional<Survey>& survey) {
    return survey ? &*survey : nullptr;
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

} // namespace

ExitStatus listNames(const NamesOptions& options) {
    const HostSetup setup(options.common, namesFor(options));
    const fs::path path = nameFilePath(setup);
    const NameFile file = readStored(path);
    const Look seen = lookUnlessStored(options, setup);
    if (options.common.json)
        printJson("names", namesAsJson(file, pointerTo(seen.survey)), seen);
    else if (file.entries().empty())
        complain(fmt::format("no names are stored in {}", platform::utf8Text(path)));
    else
        print(namesAsTable(file, pointerTo(seen.survey), options.verbose));
    return ExitStatus::done;
}

ExitStatus checkStoredNames(const NamesOptions& options) {
    const HostSetup setup(options.common, namesFor(options));
    const fs::path path = nameFilePath(setup);
    const NameFile file = readStored(path);
    const Look seen = lookUnlessStored(options, setup);
    const auto problems = checkNames(file, pointerTo(seen.survey));
    if (options.common.json)
        printJson("problems", problemsAsJson(problems, platform::utf8Text(path)), seen);
    else
        print(problemsAsText(problems, platform::utf8Text(path)));
    if (problems.empty() && !options.common.json)
        complain(fmt::format("no problem with {} names in {}", file.entries().size(),
                             platform::utf8Text(path)));
    return problems.empty() ? ExitStatus::done : ExitStatus::problemFound;
}

ExitStatus previewNames(const NamesOptions& options) {
    if (isCollection(options.common.dump))
        return previewCollection(options);
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
    const Look then = lookAtBus(*setup);
    const auto forecasts = forecastNames(file, pointerTo(now), *then.survey);

    if (options.common.json)
        printJson("names", forecastsAsJson(forecasts), then);
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

} // namespace tavctl
