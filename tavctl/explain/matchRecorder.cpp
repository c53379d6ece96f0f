#include "tavctl/explain/matchRecorder.h"

#include "pxidrivertools/busPlace.h"
#include "quil/zoerr.h"
#include "source/topologyWalk.h"
#include "tavctl/bus/busQueries.h"
#include "tavctl/words/json.h"
#include "tavctl/words/statusText.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

namespace tavctl::explain {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using nZoPciBrdWrapper_15_0::kNoHandle;
using Result = Step::Result;

std::string mapText(const std::string& map) {
    return map.empty() ? "\"\"" : map;
}

// What an exception says to a person: the plug-in's own message, or its status in words.
std::string reasonOf(const std::exception& exception) {
    const auto* const raised = dynamic_cast<const zoerr::Exception*>(&exception);
    if (raised == nullptr)
        return exception.what();
    const auto record = Json::parsedObject(raised->text());
    const auto message = record ? record->textOf("Message") : std::nullopt;
    return message ? *message : describeStatus(raised->status().code);
}

} // namespace

Candidate* MatchRecorder::current() {
    return candidate_ == kNone ? nullptr : &explanation().candidates[candidate_];
}

void MatchRecorder::step(Step step) {
    failedStep_ = failedStep_ || step.result == Result::failed;
    if (Candidate* const candidate = current())
        candidate->steps.push_back(std::move(step));
}

void MatchRecorder::failStep(std::string condition, std::string expected, std::string found) {
    step(
        {Result::failed, std::move(condition), std::move(expected), std::move(found), lookingFor_});
}

std::string MatchRecorder::partName(const tBridgeDescription& description) const {
    return names_.bridge(description);
}

void MatchRecorder::setAddress(Candidate& candidate) {
    try {
        wrapper_.GetBridgeAddress(candidate.handle, &candidate.address.bus,
                                  &candidate.address.device, &candidate.address.function);
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): the address stays unknown
    }
}

std::string MatchRecorder::bridgeText(std::uint32_t bridge) {
    Candidate at;
    at.handle = bridge;
    setAddress(at);
    return fmt::format("bridge {}", addressText(at.address));
}

// What stands where no bridge was found.
std::string MatchRecorder::placeText(const tBridgeDescription& description) const {
    cSlotPath path;
    nZOQUIL000::tErrorStatus status;
    path.ParseMachineText(anchorPath_, status);
    path.ApplyRelativePath(description.traversalMap, status); // as the look-up did
    const std::string place = slotPathText(path);
    if (const pcibus::PciFunction* const at = nZoPxiDriverTools_1_0::functionAt(bus_, path))
        return fmt::format("no bridge but {} at {}",
                           addressText({at->bus, at->device, at->function}), place);
    return fmt::format("nothing at {}", place);
}

void MatchRecorder::onModel(std::uint32_t) {
    anchorsBegun_ = 0;
    candidate_ = kNone;
    lookingFor_.clear();
    failedStep_ = false;
    naming_ = false;
    placing_ = false;
}

void MatchRecorder::onModelFailed(const std::exception& exception) {
    explanation().failure = reasonOf(exception);
    // A condition that failed by an answer is told already; one that raised is not.
    if (failedStep_)
        return;
    std::string condition = "the bus can be read";
    if (placing_)
        condition = "a bridge stands above it";
    else if (naming_)
        condition = "a terminal name can be given";
    else if (!lookingFor_.empty())
        condition = fmt::format("[{}] can be looked up", lookingFor_);
    const Candidate* const candidate = current();
    if (placing_ && candidate != nullptr && bus_.parentOfBus(candidate->address.bus) == nullptr)
        failStep(std::move(condition), "a bridge",
                 fmt::format("none, since bus {:02X} is a root bus", candidate->address.bus));
    else
        failStep(std::move(condition), "no failure", explanation().failure);
}

void MatchRecorder::onAnchor(const tAnchorIdentity&) {
    anchor_ = anchorsBegun_++;
    candidate_ = kNone;
}

void MatchRecorder::onDeviceAnchor(const tBusAddress& address) {
    auto& candidates = explanation().candidates;
    const auto known = std::find_if(candidates.begin(), candidates.end(), [&](const auto& each) {
        return each.handle == kNoHandle && each.address == address;
    });
    if (known != candidates.end()) {
        candidate_ = kNone; // the pass over all addresses begins again for each anchor
        return;
    }
    Candidate candidate;
    candidate.anchor = anchor_;
    candidate.address = address;
    candidate.qualified = true;
    candidate_ = candidates.size();
    candidates.push_back(std::move(candidate));
    lookingFor_.clear();
    placing_ = true;
}

void MatchRecorder::onDeviceAnchorPlaced(const tBusAddress& address, const cSlotPath& slotPath) {
    placing_ = false;
    Candidate* const candidate = current();
    if (candidate == nullptr || candidate->address != address)
        return;
    candidate->slotPath = slotPathText(slotPath);
    step({Result::met, "a bridge stands above it", {}, candidate->slotPath, {}});
}

void MatchRecorder::onCandidates(const Handles& bridges, std::size_t) {
    for (const std::uint32_t bridge : bridges) {
        Candidate candidate;
        candidate.anchor = anchor_;
        candidate.handle = bridge;
        candidate.outcome = Outcome::notReached; // until it is tried
        setAddress(candidate);
        explanation().candidates.push_back(std::move(candidate));
    }
}

void MatchRecorder::onCandidate(std::uint32_t bridge, const cSlotPath& slotPath) {
    auto& candidates = explanation().candidates;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        if (candidates[i].handle == bridge && candidates[i].anchor == anchor_)
            candidate_ = i;
    }
    anchorPath_ = slotPathText(slotPath);
    current()->slotPath = anchorPath_;
    current()->outcome = Outcome::rejected;
    lookingFor_.clear();
}

void MatchRecorder::onLookUp(const tBridgeDescription& description) {
    lookingFor_ = partName(description);
}

void MatchRecorder::onDescribedBridge(const tBridgeDescription& description, std::uint32_t bridge,
                                      bool counts) {
    const std::string section = std::exchange(lookingFor_, {});
    const std::string condition =
        fmt::format("[{}] stands at {}", section, mapText(description.traversalMap));
    if (bridge == kNoHandle) {
        step({Result::failed, condition, "a bridge", placeText(description), section});
        failedStep_ = false; // the search goes on with the next candidate
    } else if (counts)
        step({Result::met, condition, "a bridge", bridgeText(bridge), section});
    else
        step({Result::noted, condition,
              fmt::format("a bridge with the anchor's identifiers, {}", idsText(description.ids)),
              fmt::format("{}, which has others or serves elsewhere; not counted",
                          bridgeText(bridge)),
              section});
}

void MatchRecorder::onCandidateCounted(const Handles& matched, std::size_t required) {
    const bool qualifies = matched.size() == required;
    std::string expected = counted(required, "bridge");
    if (required == 0)
        expected += "; none is described with its identifiers";
    std::string found = counted(matched.size(), "bridge");
    if (!qualifies && matched.size() == 1)
        found += ", the candidate itself";
    step({qualifies ? Result::met : Result::failed,
          "as many bridges are found, the anchor included, as must be",
          std::move(expected),
          std::move(found),
          {}});
    failedStep_ = false; // the search goes on with the next candidate
    if (!qualifies)
        return;
    current()->qualified = true;
    for (Candidate& each : explanation().candidates) {
        if (each.anchor == anchor_ && each.outcome == Outcome::notReached &&
            matched.contains(each.handle))
            each.outcome = Outcome::partOfOther;
    }
}

void MatchRecorder::onWalk(const tBusAddress& address, const cSlotPath& anchor) {
    auto& candidates = explanation().candidates;
    const std::string path = slotPathText(anchor);
    candidate_ = kNone;
    std::size_t known = kNone;
    for (std::size_t i = 0; i < candidates.size() && candidate_ == kNone; ++i) {
        if (!candidates[i].qualified || candidates[i].address != address)
            continue;
        known = i;
        if (!candidates[i].walked)
            candidate_ = i;
    }
    if (candidate_ == kNone) { // a device that several anchors describe is listed for each
        Candidate again;
        again.anchor = anchor_;
        again.address = address;
        again.slotPath = candidates.at(known).slotPath;
        again.qualified = true;
        candidate_ = candidates.size();
        candidates.push_back(std::move(again));
    }
    failedStep_ = false;
    naming_ = false;
    labelsTaken_ = 0;
    lookingFor_.clear();
    anchorPath_ = path;
    Candidate& candidate = candidates[candidate_];
    candidate.walked = true;
    if (candidate.slotPath != path)
        step({Result::noted,
              "its places are looked for from its own slot path",
              candidate.slotPath,
              fmt::format("{}, that of another anchor of the model", path),
              {}});
}

void MatchRecorder::onReportingBridge(const tBridgeDescription& description, std::uint32_t bridge) {
    const std::string section = std::exchange(lookingFor_, {});
    step({bridge == kNoHandle ? Result::failed : Result::met,
          fmt::format("[{}], at whose address the device is reported, stands at {}", section,
                      mapText(description.traversalMap)),
          "a bridge", bridge == kNoHandle ? placeText(description) : bridgeText(bridge), section});
}

void MatchRecorder::onUpstreamPort(const tBridgeDescription& description, std::uint32_t bridge) {
    const std::string section = std::exchange(lookingFor_, {});
    step({bridge == kNoHandle ? Result::failed : Result::met,
          fmt::format("the upstream port stands at {}", mapText(description.traversalMap)),
          "a bridge", bridge == kNoHandle ? placeText(description) : bridgeText(bridge), section});
}

void MatchRecorder::onDownstreamPort(const tBridgeDescription& description, std::uint32_t bridge) {
    const std::string section = std::exchange(lookingFor_, {});
    if (bridge == kNoHandle)
        step({Result::noted,
              fmt::format("[{}] stands at {}", section, mapText(description.traversalMap)),
              "a bridge", fmt::format("{}; the port takes no label", placeText(description)),
              section});
    else
        step({Result::met,
              fmt::format("[{}] stands at {}", section, mapText(description.traversalMap)),
              "a bridge", bridgeText(bridge), section});
}

void MatchRecorder::onPortLabels(std::uint32_t linkWidth, std::uint32_t wanted, std::size_t left) {
    const std::string width =
        linkWidth == 0 ? std::string() : fmt::format(" (link width {})", linkWidth);
    step({wanted <= left ? Result::met : Result::failed,
          fmt::format("there are labels for this port{}", width),
          counted(wanted, "label"),
          fmt::format("{} left", counted(left, "label")),
          {}});
    labelsTaken_ += wanted;
}

void MatchRecorder::onLabelsLeft(std::size_t left) {
    step({left == 0 ? Result::met : Result::failed,
          "the labels come out even",
          counted(labelsTaken_, "label"),
          left == 0 ? counted(labelsTaken_, "label")
                    : fmt::format("{} too many", counted(left, "label")),
          {}});
    naming_ = left == 0;
}

void MatchRecorder::onDevice(const tBusAddress&, const cSlotPath&, const tDeviceRecord& record) {
    Candidate& candidate = *current();
    candidate.outcome = Outcome::listed;
    candidate.reported = {record.bus, record.device, record.function};
}

} // namespace tavctl::explain
