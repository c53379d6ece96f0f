#include "tavctl/names/collectionPreview.h"

#include "tavctl/bus/leftOutWords.h"
#include "tavctl/names/nameCheck.h"
#include "tavctl/names/nameReport.h"
#include "tavctl/recordings/machineDocument.h"
#include "tavctl/recordings/machineLook.h"
#include "tavctl/recordings/recordingRun.h"
#include "tavctl/words/print.h"
#include "tavctl/words/printable.h"

#include <fmt/core.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace tavctl {

namespace {

struct MachinePreview {
    std::optional<Failure> failure; // why there is nothing else
    std::optional<pcibus::LeftOut> leftOut;
    std::vector<NameForecast> forecasts;
};

// Without models of today (null) nothing can be gone.
MachinePreview preview(const Recording& recording, const Models& today, const Models& then) {
    MachinePreview result;
    result.failure = recording.failure;
    if (result.failure)
        return result;
    try {
        const WholeBus bus = readWholeBus(recording.dump.path());
        std::optional<Survey> now;
        if (today != nullptr)
            now = surveyOf(recording, bus, today);
        result.forecasts = forecastNames(namesOf(recording), now ? &*now : nullptr,
                                         surveyOf(recording, bus, then));
        result.leftOut = bus.leftOut;
    } catch (const FailureException& exception) {
        result.failure = exception.failure();
    }
    return result;
}

Models modelsOf(const CommonOptions& options) {
    const HostSetup setup(options);
    return modelsInForce();
}

bool isLoss(const NameForecast& forecast) {
    return forecast.change == NameForecast::Change::changes ||
           forecast.change == NameForecast::Change::gone;
}

void printForPeople(const Recording& recording, const MachinePreview& preview, bool verbose) {
    tellLeftOut(preview.leftOut, fmt::format(" of {}", recording.name));
    print(fmt::format("{}\n{}\n", printable(recording.name),
                      preview.forecasts.empty() ? "has no described device\n"
                                                : forecastsAsTable(preview.forecasts, verbose)));
}

} // namespace

ExitStatus previewCollection(const NamesOptions& options) {
    if (!options.newDump.empty())
        throw FailureException({"preview names", "--new-dump", "it is one machine's", {}, {}},
                               ExitStatus::wrongUsage);
    const auto recordings = recordingsAt({options.common.dump});
    CommonOptions common = optionsForMany(options.common, "preview names");
    const Models today = options.newDescriptions.empty() ? nullptr : modelsOf(common);
    if (!options.newDescriptions.empty())
        common.descriptions = options.newDescriptions;
    const Models then = modelsOf(common);

    std::optional<MachineDocument> document;
    if (options.common.json)
        document.emplace();
    bool isFailed = false;
    bool isProblem = false;
    resultsOf<MachinePreview>(
        recordings, "looking at recordings",
        [&](const Recording& recording) { return preview(recording, today, then); },
        [&](const Recording& recording, const MachinePreview& preview, Progress& progress) {
            const Progress::Hidden hidden(progress);
            if (preview.failure) {
                isFailed = true;
                complain(preview.failure->sentence());
            }
            const auto& forecasts = preview.forecasts;
            isProblem = isProblem || std::any_of(forecasts.begin(), forecasts.end(), isLoss);
            if (document)
                document->add(recording, preview.failure,
                              fmt::format(R"("leftOut":{},"names":{})",
                                          leftOutJson(preview.leftOut).text(),
                                          forecastsAsJson(forecasts).text()));
            else if (!preview.failure)
                printForPeople(recording, preview, options.verbose);
        });
    if (document)
        document->end();
    if (isFailed)
        return ExitStatus::failed;
    return isProblem ? ExitStatus::problemFound : ExitStatus::done;
}

} // namespace tavctl
