#include "tavctl/explain/explain.h"

#include "tavctl/explain/changes.h"
#include "tavctl/explain/matchRecorder.h"
#include "tavctl/match/busBridges.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

namespace tavctl::explain {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;

std::vector<std::string> anchorTexts(const lint::Description& description) {
    std::vector<std::string> texts;
    const auto& anchors = description.model().anchors;
    for (std::size_t i = 0; i < anchors.size(); ++i)
        texts.push_back(
            fmt::format("[{}] {}{}", description.anchorSection(i),
                        anchors[i].headerType == kHeaderTypeBridge ? "a bridge " : "a function ",
                        idsText(anchors[i].ids)));
    return texts;
}

PartNames partNames(const lint::Description& description) {
    PartNames names;
    names.bridge = [&description](const tBridgeDescription& bridge) {
        return sectionOf(description, bridge);
    };
    return names;
}

// What was not walked because the model's turn had ended, and the order in which people look.
void finish(Explanation& explanation) {
    for (Candidate& each : explanation.candidates) {
        if (each.qualified && !each.walked && each.firstFailure() == nullptr)
            each.outcome = Outcome::notReached;
    }
    const auto rank = [](const Candidate& each) {
        return std::pair(each.outcome, -static_cast<std::ptrdiff_t>(each.conditionsMet()));
    };
    std::stable_sort(explanation.candidates.begin(), explanation.candidates.end(),
                     [&](const Candidate& a, const Candidate& b) { return rank(a) < rank(b); });
}

} // namespace

std::vector<Explanation> explain(const Descriptions& descriptions, ModelMatcher& matcher,
                                 const std::shared_ptr<const pcibus::Bus>& bus) {
    std::vector<tModelDescription> models;
    std::vector<PartNames> names;
    std::vector<Explanation> explanations;
    for (const auto& description : descriptions) {
        models.push_back(description->model());
        names.push_back(partNames(*description));
        Explanation explanation;
        explanation.model = description->model().model;
        explanation.file = description->path();
        explanation.anchors = anchorTexts(*description);
        explanations.push_back(std::move(explanation));
    }
    MatchRecorder recorder(matcher.wrapper(), *bus, names, explanations);
    matcher.observe(models, recorder);
    ModelMatcher recorded(recordedBus(bus));
    for (std::size_t i = 0; i < explanations.size(); ++i) {
        finish(explanations[i]);
        findChanges(*descriptions[i], recorded, *bus, explanations[i]);
    }
    return explanations;
}

} // namespace tavctl::explain
