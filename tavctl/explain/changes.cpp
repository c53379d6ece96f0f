#include "tavctl/explain/changes.h"

#include "pxidrivertools/busPlace.h"
#include "source/descriptionLoader.h"
#include "tavctl/bus/busQueries.h"
#include "tavctl/description/modelShape.h"
#include "tavctl/explain/idSlips.h"
#include "tavctl/match/busBridges.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <set>
#include <utility>

namespace tavctl::explain {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using namespace nDescription;
using nZoPxiDriverTools_1_0::cSlotPath;
using Result = Step::Result;

// Bounds on what is tried, so that an answer comes at once on any machine.
constexpr std::size_t kMostCandidates = 4;
constexpr std::size_t kMostMoves = 48;
constexpr std::size_t kMostLabels = 64;
constexpr std::size_t kMostNearFunctions = 12;
constexpr std::size_t kShownNearFunctions = 5;
// Models that are alike but for their names stand close together in a folder.
constexpr std::size_t kMostRemembered = 1024;

bool equal(const tBridgeDescription& a, const tBridgeDescription& b) {
    return a.traversalMap == b.traversalMap && a.ids == b.ids &&
           a.reportAddressFromThisBridge == b.reportAddressFromThisBridge &&
           a.isOptional == b.isOptional;
}

std::string listText(const std::list<std::string>& labels) {
    std::string text;
    for (const std::string& label : labels)
        text.append(text.empty() ? "" : ",").append(label);
    return labels.empty() ? "\"\"" : text;
}

class ChangeSearch {
public:
    ChangeSearch(const tModelDescription& model, const lint::SectionNames& sections,
                 ModelMatcher& matcher, const pcibus::Bus& bus)
        : model_(model), sections_(sections), matcher_(matcher), bus_(bus) {}

    // One of those of an explanation.
    void search(Candidate& candidate, const std::vector<Candidate>& candidates) {
        candidate_ = &candidate;
        const Step* const failure = candidate.firstFailure();
        if (failure == nullptr || candidate.slotPath.empty())
            return;
        if (!failure->section.empty())
            changeSection(failure->section);
        changeNoted();
        describeAnchor();
        if (candidate.qualified)
            changeLabelsUnlessOthersNeedThem(candidates);
    }

    std::vector<NearFunction> searchNear(std::vector<NearFunction> near) {
        // One that a slip explains is likelier than one that only shares some.
        const auto likeness = [&](const NearFunction& each) {
            return std::pair(!each.slip.empty(),
                             sameIds(model_.anchors[each.anchor].ids, each.ids));
        };
        std::stable_sort(near.begin(), near.end(),
                         [&](const auto& a, const auto& b) { return likeness(a) > likeness(b); });
        if (near.size() > kMostNearFunctions)
            near.resize(kMostNearFunctions);
        for (NearFunction& each : near)
            tryIdentifiers(each);
        std::stable_partition(near.begin(), near.end(),
                              [](const NearFunction& each) { return !each.changes.empty(); });
        if (near.size() > kShownNearFunctions)
            near.resize(kShownNearFunctions);
        return near;
    }

private:
    using Model = tModelDescription;

    bool listsWith(const Model& model) {
        const auto devices = matcher_.match({model});
        return std::any_of(devices.begin(), devices.end(), [&](const MatchedDevice& each) {
            return each.slotPath == candidate_->slotPath;
        });
    }

    bool tryChange(const Model& model, Change change) {
        if (!listsWith(model))
            return false;
        candidate_->changes.push_back(std::move(change));
        return true;
    }

    // Applies a change to every description that a section gives.
    void editSection(Model& model, const std::string& section,
                     const std::function<void(tBridgeDescription&)>& edit) const {
        for (std::size_t i = 0; i < model.downstreamPorts.size(); ++i) {
            if (sections_.downstreamPort(i) == section)
                edit(model.downstreamPorts[i]);
        }
        for (std::size_t i = 0; i < model.internalBridges.size(); ++i) {
            if (sections_.internalBridge(i) == section)
                edit(model.internalBridges[i]);
        }
        if (section == kSectionUpstreamPort)
            edit(model.upstreamPort);
    }

    // The first description that a section of a bridge gives.
    [[nodiscard]] tBridgeDescription descriptionOf(const std::string& section) const {
        std::optional<tBridgeDescription> result;
        Model copy = model_;
        editSection(copy, section, [&](tBridgeDescription& each) {
            if (!result)
                result = each;
        });
        return result.value();
    }

    // A bridge that was not found: it may stand elsewhere, or need not be there.
    void changeSection(const std::string& section) {
        const tBridgeDescription described = descriptionOf(section);
        moveSection(section, described);
        if (!described.isOptional) {
            Model model = model_;
            editSection(model, section, [](auto& each) { each.isOptional = true; });
            tryChange(model, {section, kIsOptional, "1", "if the bridge may be missing"});
        }
    }

    [[nodiscard]] const pcibus::PciFunction* functionAtMap(const std::string& map) const {
        cSlotPath path;
        nZOQUIL000::tErrorStatus status;
        path.ParseMachineText(candidate_->slotPath, status);
        path.ApplyRelativePath(map, status);
        if (status.failed())
            return nullptr;
        return nZoPxiDriverTools_1_0::functionAt(bus_, path);
    }

    // The bridges that no section describes, below the anchor, or beside it when it is no bridge;
    // those with the described identifiers first.
    [[nodiscard]] std::vector<const pcibus::PciFunction*>
    freeBridges(const pcibus::PciFunction& anchor, const tPciIds& ids) const {
        std::set<std::uint32_t> taken{anchor.handle()};
        for (const std::string& section : sections_.bridges()) {
            const auto* const at = functionAtMap(descriptionOf(section).traversalMap);
            if (at != nullptr)
                taken.insert(at->handle());
        }
        const pcibus::PciFunction* const top =
            anchor.isBridge() ? &anchor : bus_.parentOfBus(anchor.bus);
        std::vector<const pcibus::PciFunction*> bridges;
        for (const std::uint32_t handle : bus_.bridges()) {
            const pcibus::PciFunction* const bridge = bus_.findBridge(handle);
            if (!taken.contains(handle) && top != nullptr && isBelow(*bridge, *top))
                bridges.push_back(bridge);
        }
        std::stable_partition(bridges.begin(), bridges.end(),
                              [&](const auto* each) { return each->ids() == ids; });
        if (bridges.size() > kMostMoves)
            bridges.resize(kMostMoves);
        return bridges;
    }

    [[nodiscard]] bool isBelow(const pcibus::PciFunction& function,
                               const pcibus::PciFunction& bridge) const {
        const pcibus::PciFunction* at = bus_.parentOfBus(function.bus);
        while (at != nullptr && at != &bridge)
            at = bus_.parentOfBus(at->bus);
        return at == &bridge;
    }

    void moveSection(const std::string& section, const tBridgeDescription& described) {
        const pcibus::PciFunction* const anchor = functionAtSlotPath(bus_, candidate_->slotPath);
        if (anchor == nullptr)
            return;
        const pcibus::Position from = pcibus::positionOf(bus_, *anchor);
        for (const pcibus::PciFunction* bridge : freeBridges(*anchor, described.ids)) {
            const std::string map = mapBetween(from, pcibus::positionOf(bus_, *bridge));
            Model model = model_;
            editSection(model, section, [&](auto& each) { each.traversalMap = map; });
            if (tryChange(model, {section, kTraversalMapFromAnchor, map,
                                  fmt::format("there stands {}, {}", pcibus::addressText(*bridge),
                                              idsText(bridge->ids()))}))
                return;
        }
    }

    // Bridges that were there but did not count, and ports that were not there.
    void changeNoted() {
        std::set<std::string> done;
        const std::vector<Step> steps = candidate_->steps;
        for (const Step& step : steps) {
            if (step.result != Result::noted || step.section.empty() ||
                !done.insert(step.section).second)
                continue;
            const tBridgeDescription described = descriptionOf(step.section);
            const pcibus::PciFunction* const at = functionAtMap(described.traversalMap);
            if (at == nullptr || !at->isBridge())
                moveSection(step.section, described);
            else
                takeIdentifiers(step.section, *at);
        }
    }

    void takeIdentifiers(const std::string& section, const pcibus::PciFunction& at) {
        const tPciIds ids = at.ids();
        const std::string slip = slipText(descriptionOf(section).ids, ids);
        Model model = model_;
        editSection(model, section, [&](auto& each) { each.ids = ids; });
        if (!tryChange(
                model,
                {section, "Vid, Pid, SsVid, SsPid",
                 fmt::format("{:04X}, {:04X}, {:04X}, {:04X}", ids.vendor, ids.device,
                             ids.subsystemVendor, ids.subsystem),
                 fmt::format("the identifiers of {}{}, in place of IDsSameAs if that is there",
                             pcibus::addressText(at),
                             slip.empty() ? "" : fmt::format(" ({})", slip))})) {
            model = model_;
            editSection(model, section, [](auto& each) { each.isOptional = true; });
            tryChange(model, {section, kIsOptional, "1", "so that it is not counted"});
        }
    }

    void describeAnchor() {
        const tAnchorIdentity& anchor = model_.anchors.at(candidate_->anchor);
        if (anchor.headerType != kHeaderTypeBridge || candidate_->qualified)
            return;
        Model model = model_;
        tBridgeDescription self;
        self.traversalMap.clear();
        self.ids = anchor.ids;
        model.internalBridges.push_back(self);
        tryChange(model, {"InternalBridgeAnchor", kTraversalMapFromAnchor, "\"\"",
                          "a new section, with IDsSameAs = Anchor and named in InternalBridges: "
                          "the anchor has to be described too"});
    }

    // The address of another box of the model that is listed with the labels as they are, or would
    // be if none failed before it; empty when there is none.
    [[nodiscard]] std::string listedAlike(const std::vector<Candidate>& candidates) const {
        std::set<std::string> waiting;
        for (const Candidate& each : candidates) {
            if (each.outcome == Outcome::listed)
                return addressText(each.address);
            if (each.outcome == Outcome::notReached && each.qualified)
                waiting.insert(each.slotPath);
        }
        if (waiting.empty())
            return {};
        for (const MatchedDevice& device :
             ModelMatcher(recordedBus(withoutRejected(candidates))).match({model_})) {
            if (waiting.contains(device.slotPath))
                return addressText(device.address);
        }
        return {};
    }

    // The bus without the candidates that failed, and what is below them.
    [[nodiscard]] std::shared_ptr<const pcibus::Bus>
    withoutRejected(const std::vector<Candidate>& candidates) const {
        std::set<const pcibus::PciFunction*> gone;
        for (const Candidate& each : candidates) {
            if (each.outcome == Outcome::rejected && each.qualified)
                gone.insert(functionAtSlotPath(bus_, each.slotPath));
        }
        std::vector<pcibus::PciFunction> functions;
        for (const pcibus::PciFunction& function : bus_.functions()) {
            const bool stays =
                std::none_of(gone.begin(), gone.end(), [&](const pcibus::PciFunction* each) {
                    return each == &function || (each != nullptr && isBelow(function, *each));
                });
            if (stays)
                functions.push_back(function);
        }
        return std::make_shared<const pcibus::Bus>(std::move(functions), pcibus::addressText);
    }

    void changeLabelsUnlessOthersNeedThem(const std::vector<Candidate>& candidates) {
        auto& changes = candidate_->changes;
        const auto before = static_cast<std::ptrdiff_t>(changes.size());
        changeLabels();
        changeLinkWidth();
        if (changes.begin() + before == changes.end())
            return;
        const std::string other = listedAlike(candidates);
        if (other.empty())
            return;
        changes.erase(changes.begin() + before, changes.end());
        candidate_->hint = fmt::format("{} is a box of this model that comes out even with these "
                                       "labels, so no others are proposed: look for what is "
                                       "missing here",
                                       other);
    }

    void changeLabels() {
        Model fewer = model_;
        while (!fewer.connectorLabels.empty()) {
            fewer.connectorLabels.pop_back();
            const std::size_t less = model_.connectorLabels.size() - fewer.connectorLabels.size();
            if (tryChange(fewer, {kSectionModel, kConnectorLabels, listText(fewer.connectorLabels),
                                  fmt::format("{} less, for the ports that are there",
                                              counted(less, "label"))}))
                return;
        }
        Model more = model_;
        for (std::size_t n = 1; n <= kMostLabels; ++n) {
            more.connectorLabels.push_back(fmt::format("NEW{}", n));
            if (tryChange(more, {kSectionModel, kConnectorLabels, listText(more.connectorLabels),
                                 fmt::format("{} more", counted(n, "label"))}))
                return;
        }
    }

    void changeLinkWidth() {
        if (model_.linkWidthPerLabel == 0)
            return;
        for (const std::int32_t width : {1, 2, 4, 8, 16, 32}) {
            Model model = model_;
            model.linkWidthPerLabel = width;
            tryChange(model, {kSectionModel, kLinkWidthPerLabel, std::to_string(width),
                              "with the labels as they are"});
        }
    }

    void tryIdentifiers(NearFunction& near) {
        Model model = model_;
        tAnchorIdentity& anchor = model.anchors[near.anchor];
        const tAnchorIdentity before = anchor;
        anchor.ids = near.ids;
        anchor.headerType = near.isBridge == (before.headerType == kHeaderTypeBridge)
                                ? before.headerType
                                : (near.isBridge ? kHeaderTypeBridge : 0U);
        // The bridges that take their identifiers from the anchor change with it.
        const auto follow = [&](tBridgeDescription& each) {
            if (each.ids == before.ids)
                each.ids = near.ids;
        };
        for (tBridgeDescription& each : model.downstreamPorts)
            follow(each);
        for (tBridgeDescription& each : model.internalBridges)
            follow(each);
        follow(model.upstreamPort);
        const auto devices = matcher_.match({model});
        if (std::any_of(devices.begin(), devices.end(),
                        [&](const MatchedDevice& each) { return each.address == near.address; }))
            near.changes = identifierChanges(near, before, anchor);
    }

    [[nodiscard]] std::vector<Change> identifierChanges(const NearFunction& near,
                                                        const tAnchorIdentity& before,
                                                        const tAnchorIdentity& after) const {
        const std::string section = sections_.anchor(near.anchor);
        std::vector<Change> changes;
        const auto add = [&](const char* key, std::uint32_t from, std::uint32_t to, int digits) {
            if (from != to)
                changes.push_back({section, key, hexadecimal(to, digits),
                                   fmt::format("as {} has it", addressText(near.address))});
        };
        add(kPciHeaderType, before.headerType, after.headerType, 1);
        add(kVid, before.ids.vendor, after.ids.vendor, 4);
        add(kPid, before.ids.device, after.ids.device, 4);
        add(kSsVid, before.ids.subsystemVendor, after.ids.subsystemVendor, 4);
        add(kSsPid, before.ids.subsystem, after.ids.subsystem, 4);
        return changes;
    }

    const tModelDescription& model_;
    const lint::SectionNames& sections_;
    ModelMatcher& matcher_;
    const pcibus::Bus& bus_;
    Candidate* candidate_ = nullptr;
};

// All that the search for changes goes by, but for the bus: what is equal here has equal changes.
std::string searchedFor(const tModelDescription& model, const lint::SectionNames& sections,
                        const Explanation& explanation) {
    std::string text = lint::shapeOf(model);
    const auto add = [&](std::string_view part) {
        text += std::to_string(part.size());
        text.append(":").append(part);
    };
    for (const std::string& label : model.connectorLabels)
        add(label);
    for (std::size_t i = 0; i < model.anchors.size(); ++i)
        add(sections.anchor(i));
    for (const std::string& section : sections.bridges())
        add(section);
    for (std::size_t i = 0; i < model.downstreamPorts.size(); ++i)
        add(sections.downstreamPort(i));
    for (std::size_t i = 0; i < model.internalBridges.size(); ++i)
        add(sections.internalBridge(i));
    for (const Candidate& candidate : explanation.candidates) {
        add(fmt::format("{} {} {} {}", static_cast<int>(candidate.outcome), candidate.anchor,
                        candidate.qualified, candidate.slotPath));
        for (const Step& step : candidate.steps) {
            if (step.result != Result::met)
                add(fmt::format("{} {}", static_cast<int>(step.result), step.section));
        }
    }
    return text;
}

} // namespace

std::string sectionOf(const tModelDescription& model, const lint::SectionNames& sections,
                      const tBridgeDescription& bridge) {
    for (std::size_t i = 0; i < model.downstreamPorts.size(); ++i) {
        if (equal(model.downstreamPorts[i], bridge))
            return sections.downstreamPort(i);
    }
    for (std::size_t i = 0; i < model.internalBridges.size(); ++i) {
        if (equal(model.internalBridges[i], bridge))
            return sections.internalBridge(i);
    }
    return kSectionUpstreamPort;
}

std::string mapBetween(const pcibus::Position& from, const pcibus::Position& to) {
    const auto a = from.hops();
    const auto b = to.hops();
    std::size_t common = 0;
    while (common < a.size() && common < b.size() &&
           a[a.size() - 1 - common] == b[b.size() - 1 - common])
        ++common;
    std::string map;
    const auto add = [&](std::string_view step) {
        map.append(map.empty() ? "" : ",").append(step);
    };
    for (std::size_t up = common; up < a.size(); ++up)
        add("-");
    for (std::size_t i = b.size() - common; i > 0; --i)
        add(fmt::format("d{}f{}", b[i - 1] >> 3, b[i - 1] & 7));
    return map;
}

ChangeFinder::ChangeFinder(std::shared_ptr<const pcibus::Bus> bus)
    : bus_(std::move(bus)), matcher_(recordedBus(bus_)), nearFunctions_(*bus_) {}

// Near is a function with another header type or, of the four identifiers, at least vendor and
// device, be it with a slip, or all but one.
std::vector<NearFunction> ChangeFinder::nearFunctions(const tModelDescription& model) const {
    std::vector<NearFunction> near;
    for (std::size_t anchor = 0; anchor < model.anchors.size(); ++anchor) {
        const tPciIds& wanted = model.anchors[anchor].ids;
        const bool wantsBridge = model.anchors[anchor].headerType == kHeaderTypeBridge;
        for (const std::size_t position : nearFunctions_.find(wanted)) {
            const pcibus::PciFunction& function = bus_->functions()[position];
            if (function.ids() == wanted && (!wantsBridge || function.isBridge()))
                continue;
            NearFunction each;
            each.anchor = anchor;
            each.address = {function.bus, function.device, function.function};
            each.ids = function.ids();
            each.isBridge = function.isBridge();
            each.slip = slipText(wanted, each.ids);
            near.push_back(std::move(each));
        }
    }
    return near;
}

void ChangeFinder::find(const tModelDescription& model, const lint::SectionNames& sections,
                        Explanation& explanation) {
    std::vector<NearFunction> near;
    if (explanation.listed() == 0)
        near = nearFunctions(model);
    const bool hasRejected =
        std::any_of(explanation.candidates.begin(), explanation.candidates.end(),
                    [](const Candidate& each) { return each.outcome == Outcome::rejected; });
    if (!hasRejected && near.empty())
        return;
    if (found_.size() >= kMostRemembered)
        found_.clear();
    const auto [known, isNew] = found_.try_emplace(searchedFor(model, sections, explanation));
    Found& found = known->second;
    if (isNew) {
        ChangeSearch search(model, sections, matcher_, *bus_);
        std::size_t searched = 0;
        for (Candidate& candidate : explanation.candidates) {
            if (candidate.outcome == Outcome::rejected && searched++ < kMostCandidates)
                search.search(candidate, explanation.candidates);
            found.changes.push_back(candidate.changes);
            found.hints.push_back(candidate.hint);
        }
        found.near = search.searchNear(std::move(near));
    }
    for (std::size_t i = 0; i < explanation.candidates.size(); ++i) {
        explanation.candidates[i].changes = found.changes[i];
        explanation.candidates[i].hint = found.hints[i];
    }
    explanation.near = found.near;
}

} // namespace tavctl::explain
