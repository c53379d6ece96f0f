#include "tavctl/describe/proof.h"

#include "source/modelList.h"
#include "tavctl/explain/matchRecorder.h"
#include "tavctl/match/busBridges.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>

namespace tavctl::describe {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using explain::Candidate;
using explain::Outcome;

explain::PartNames namesOf(const Draft& draft) {
    explain::PartNames names;
    names.bridge = [&draft](const tBridgeDescription& bridge) -> std::string {
        for (const DraftBridge& port : draft.ports) {
            if (port.map == bridge.traversalMap)
                return "DownstreamPort" + port.name;
        }
        for (const DraftBridge& internal : draft.internalBridges) {
            if (internal.map == bridge.traversalMap)
                return "InternalBridge" + internal.name;
        }
        return "UpstreamPort";
    };
    return names;
}

// The candidate with this outcome that comes first on the bus.
const Candidate* firstWith(const std::vector<Candidate>& candidates, Outcome outcome) {
    const auto found = std::find_if(candidates.begin(), candidates.end(),
                                    [&](const Candidate& each) { return each.outcome == outcome; });
    return found == candidates.end() ? nullptr : &*found;
}

std::string failureOf(const Candidate& candidate) {
    const explain::Step* const failure = candidate.firstFailure();
    return failure == nullptr
               ? std::string()
               : fmt::format("expected that {}, found {}", failure->condition, failure->found);
}

std::string obstacleOf(const Candidate* own, const std::vector<Candidate>& candidates) {
    if (own == nullptr)
        return "it is not found by its identifiers";
    if (own->outcome == Outcome::partOfOther) {
        const Candidate* const other = firstWith(candidates, Outcome::listed);
        return fmt::format("a bridge with the same identifiers{}{}, is taken for the box, and this "
                           "one for a part of it",
                           other == nullptr ? "" : ", ",
                           other == nullptr ? "" : explain::addressText(other->address));
    }
    const bool notReached = own->firstFailure() == nullptr;
    const Candidate* const earlier =
        notReached ? firstWith(candidates, Outcome::rejected) : nullptr;
    if (earlier != nullptr)
        return fmt::format("{} has the same identifiers and comes first, and what fails there ends "
                           "the model's turn ({})",
                           explain::addressText(earlier->address), failureOf(*earlier));
    return failureOf(*own);
}

} // namespace

Proof prove(const Draft& draft, const std::shared_ptr<const pcibus::Bus>& bus,
            const pcibus::PciFunction& bridge) {
    ModelMatcher matcher(recordedBus(bus));
    explain::Explanation explanation;
    const explain::PartNames names = namesOf(draft);
    explain::MatchRecorder recorder(matcher.wrapper(), *bus, names, explanation);
    ModelList models({modelOf(draft)});
    matcher.observe(models, recorder);
    Proof proof;
    const Candidate* own = nullptr;
    auto& candidates = explanation.candidates;
    for (Candidate& each : candidates) {
        if (each.qualified && !each.walked)
            each.outcome = Outcome::notReached;
        if (each.address == tBusAddress{bridge.bus, bridge.device, bridge.function})
            own = &each;
        else if (each.outcome == Outcome::listed)
            proof.others.push_back(explain::addressText(each.address));
    }
    proof.lists = own != nullptr && own->outcome == Outcome::listed;
    if (!proof.lists)
        proof.obstacle = obstacleOf(own, candidates);
    return proof;
}

Proof makeProvable(Draft& draft, const std::shared_ptr<const pcibus::Bus>& bus,
                   const pcibus::PciFunction& bridge) {
    Proof proof = prove(draft, bus, bridge);
    if (proof.lists)
        return proof;
    // Bridges that are not counted cannot be taken for another box's.
    Draft uncounted = draft;
    bool changed = false;
    for (auto* bridges : {&uncounted.internalBridges, &uncounted.ports}) {
        for (DraftBridge& each : *bridges) {
            if (each.ids == draft.anchor)
                changed = each.isOptional = true;
        }
    }
    if (!changed)
        return proof;
    uncounted.notes.push_back("Bridges of this box have the same identifiers as one above it, "
                              "which would be taken for the box. So they are marked IsOptional: "
                              "the search counts the anchor alone, and the labels decide.");
    Proof second = prove(uncounted, bus, bridge);
    if (!second.lists)
        return proof;
    draft = std::move(uncounted);
    return second;
}

} // namespace tavctl::describe
