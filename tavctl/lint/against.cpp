#include "tavctl/lint/against.h"

#include "tavctl/bus/busAddress.h"
#include "tavctl/bus/busFile.h"
#include "tavctl/description/loadFailure.h"
#include "tavctl/match/busBridges.h"
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

std::vector<FoundModel> modelsOn(const std::shared_ptr<const pcibus::Bus>& bus,
                                 const std::vector<tModelDescription>& models) {
    std::vector<FoundModel> found;
    for (const MatchedDevice& device : ModelMatcher(recordedBus(bus)).match(models)) {
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

Comparison compare(const std::string& dump, const std::vector<tModelDescription>& models,
                   const std::vector<tModelDescription>* before) {
    ReadBus read = readBusFile(dump);
    const auto bus = std::make_shared<const pcibus::Bus>(std::move(read.bus));
    Comparison comparison{dump, modelsOn(bus, models), read.leftOut};
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
    return comparison;
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
        if (comparison.models.empty())
            text += "  has none of the models\n";
        for (const FoundModel& each : comparison.models)
            text += fmt::format("  {}  {}  {}\n", changeName(each.change), each.address,
                                printable(each.model));
    }
    return text;
}

} // namespace tavctl::lint
