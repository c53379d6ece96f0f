#include "tavctl/mock/matchFaults.h"

#include "pcibus/pciFunction.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

namespace tavctl::mock {

using namespace nZoTavManagerPciPlugin_15_0;
using nZoPciBrdWrapper_15_0::kNoHandle;

namespace {

std::string textOfAddress(std::uint32_t handle) {
    const auto hop = static_cast<std::uint8_t>(handle & 0xFFU);
    return pcibus::addressTextOf(handle >> 8U, pcibus::deviceOfHop(hop),
                                 pcibus::functionOfHop(hop));
}

} // namespace

std::string MatchFaults::why(std::size_t model, const Function& anchor, std::uint8_t hop) const {
    const auto number = static_cast<std::uint32_t>(model);
    const std::uint32_t handle = static_cast<std::uint32_t>(anchor.bus << 8U | hop);
    if (const auto fault = faults_.find({number, handle}); fault != faults_.end())
        return fault->second;
    const auto end = ends_.find(number);
    return end != ends_.end() ? end->second : std::string("its bridges serve another box");
}

void MatchFaults::note(const std::string& fault) {
    faults_.try_emplace({model_, at_}, fault);
}

void MatchFaults::onModel(std::uint32_t index) {
    DeviceRecorder::onModel(index);
    model_ = index;
}

void MatchFaults::onModelFailed(const std::exception&) {
    const auto fault = faults_.find({model_, at_});
    ends_[model_] =
        fmt::format("{} is taken for the model too, which ends its turn: {}", textOfAddress(at_),
                    fault == faults_.end() ? std::string("it cannot be read") : fault->second);
}

void MatchFaults::onCandidate(std::uint32_t bridge, const cSlotPath&) {
    at_ = bridge;
}

void MatchFaults::onDescribedBridge(const tBridgeDescription& description, std::uint32_t bridge,
                                    bool) {
    if (bridge == kNoHandle)
        note(fmt::format("a bridge that is counted is missing, at {}",
                         inQuotes(description.traversalMap)));
}

void MatchFaults::onCandidateCounted(const Handles& matched, std::size_t required) {
    if (matched.size() != required)
        note(fmt::format("{} must be found, the anchor included, and {} {}",
                         counted(required, "bridge"), matched.size(),
                         matched.size() == 1 ? "is" : "are"));
}

void MatchFaults::onDeviceAnchor(const tBusAddress& address) {
    at_ = handleOf(address);
}

void MatchFaults::onWalk(const tBusAddress& address, const cSlotPath& anchor) {
    DeviceRecorder::onWalk(address, anchor);
    at_ = handleOf(address);
}

void MatchFaults::onReportingBridge(const tBridgeDescription& description, std::uint32_t bridge) {
    if (bridge == kNoHandle)
        note(fmt::format("the bridge that it is to be reported at is missing, at {}",
                         inQuotes(description.traversalMap)));
}

void MatchFaults::onPortLabels(std::uint32_t linkWidth, std::uint32_t wanted, std::size_t left) {
    DeviceRecorder::onPortLabels(linkWidth, wanted, left);
    if (wanted > left)
        note(fmt::format("a port asks for {}, and {} left", counted(wanted, "label"),
                         left == 1 ? "1 is" : fmt::format("{} are", left)));
}

void MatchFaults::onLabelsLeft(std::size_t left) {
    if (left != 0)
        note(fmt::format("{} left when the ports are done",
                         left == 1 ? "1 label is" : fmt::format("{} labels are", left)));
}

} // namespace tavctl::mock
