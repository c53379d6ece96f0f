#include "tavctl/lint/against.h"

#include "source/modelList.h"
#include "tavctl/bus/busAddress.h"
#include "tavctl/bus/busFile.h"
#include "tavctl/description/loadFailure.h"
#include "tavctl/match/busBridges.h"
#include "tavctl/match/modelMatcher.h"
#include "tavctl/recordings/recordingRun.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/printable.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <tuple>
#include <utility>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using Change = FoundModel::Change;

std::vector<FoundModel> modelsOn(const std::shared_ptr<const pcibus::Bus>& bus, ModelList& models) {
    std::vector<FoundModel> found;
    for (const MatchedDevice& device : ModelMatcher(recordedBus(bus)).match(models, {})) {
        const auto& record = device.record;
        found.push_back({Change::has, record.modelName,
                         pcibus::addressTextOf(record.bus, record.device, record.function),
                         device.slotPath});
    }
    return found;
}

// Moves the first of `models` that is the same device out of them; whether there was one.
bool takeSame(std::vector<FoundModel>& models, const FoundModel& wanted) {
    const auto same = std::find_if(models.begin(), models.end(), [&](const FoundModel& each) {
        return each.model == wanted.model && each.slotPath == wanted.slotPath;
    });
    if (same == models.end())
        return false;
    models.erase(same);
    return true;
}

std::string_view changeName(Change change) {
    if (change == Change::has)
        return "has  ";
    return change == Change::gains ? "gains" : "loses";
}

void match(Comparison& comparison, const Recording& recording, ModelList& models,
           ModelList* before) {
    ReadBus read = readBusFile(recording.dump.path());
    const auto bus = std::make_shared<const pcibus::Bus>(std::move(read.bus));
    comparison.leftOut = read.leftOut;
    comparison.models = modelsOn(bus, models);
    if (before != nullptr) {
        std::vector<FoundModel> old = modelsOn(bus, *before);
        for (FoundModel& each : comparison.models)
            each.change = takeSame(old, each) ? Change::has : Change::gains;
        for (FoundModel& each : old) {
            each.change = Change::loses;
            comparison.models.push_back(std::move(each));
        }
    }
    std::stable_sort(comparison.models.begin(), comparison.models.end(),
                     [](const FoundModel& a, const FoundModel& b) {
                         return std::tuple(a.slotPath, a.change == Change::gains) <
                                std::tuple(b.slotPath, b.change == Change::gains);
                     });
}

Comparison compare(const Recording& recording, ModelList& models, ModelList* before) {
    Comparison comparison;
    comparison.dump = recording.dump.path();
    comparison.failure = recording.failure;
    if (comparison.failure) {
        comparison.dump = recording.name;
        return comparison;
    }
    try {
        match(comparison, recording, models, before);
    } catch (const FailureException& exception) {
        comparison.failure = exception.failure();
        comparison.models.clear();
    }
    return comparison;
}

} // namespace

std::vector<tModelDescription> loadModels(const std::vector<std::string>& files) {
    std::vector<tModelDescription> models;
    for (const std::string& file : files) {
        const Description description(file);
        if (!description.loads())
            throw FailureException(loadFailure(description), ExitStatus::problemFound);
        models.push_back(description.model());
    }
    return models;
}

std::vector<Comparison> compareAll(const std::vector<Recording>& recordings,
                                   const std::vector<tModelDescription>& models,
                                   const std::vector<tModelDescription>* before) {
    ModelList now(models);
    std::optional<ModelList> then;
    if (before != nullptr)
        then.emplace(*before);
    std::vector<Comparison> comparisons;
    resultsOf<Comparison>(
        recordings, "matching recordings",
        [&](const Recording& recording) {
            return compare(recording, now, then ? &*then : nullptr);
        },
        [&](const Recording&, Comparison comparison, Progress&) {
            comparisons.push_back(std::move(comparison));
        });
    return comparisons;
}

bool failedAny(const std::vector<Comparison>& comparisons) {
    return std::any_of(comparisons.begin(), comparisons.end(),
                       [](const Comparison& comparison) { return comparison.failure.has_value(); });
}

bool losesAny(const std::vector<Comparison>& comparisons) {
    return std::any_of(comparisons.begin(), comparisons.end(), [](const Comparison& comparison) {
        return std::any_of(comparison.models.begin(), comparison.models.end(),
                           [](const FoundModel& each) { return each.change == Change::loses; });
    });
}

std::string comparisonsAsText(const std::vector<Comparison>& comparisons) {
    std::string text;
    for (const Comparison& comparison : comparisons) {
        text += fmt::format("\n{}\n", printable(comparison.dump));
        if (comparison.failure)
            text += fmt::format("  not looked at: {}\n", printable(comparison.failure->reason));
        else if (comparison.models.empty())
            text += "  has none of the models\n";
        for (const FoundModel& each : comparison.models)
            text += fmt::format("  {}  {}  {}\n", changeName(each.change), each.address,
                                printable(each.model));
    }
    return text;
}

} // namespace tavctl::lint
