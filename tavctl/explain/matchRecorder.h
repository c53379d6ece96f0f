// Writes down what the plug-in's code does while it matches models.
#pragma once

#include "pciBrdWrapper/iPciBrdWrapper_ex.h"
#include "pcibus/bus.h"
#include "source/matchObserver.h"
#include "tavctl/explain/explanation.h"

#include <functional>
#include <string>
#include <vector>

namespace tavctl::explain {

// How a model's parts are called in its file.
struct PartNames {
    std::function<std::string(const nZoTavManagerPciPlugin_15_0::tBridgeDescription&)> bridge;
};

class MatchRecorder : public nZoTavManagerPciPlugin_15_0::MatchObserver {
public:
    using iPciBrdWrapper_ex = nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0::iPciBrdWrapper_ex;
    using tBridgeDescription = nZoTavManagerPciPlugin_15_0::tBridgeDescription;
    using tBusAddress = nZoTavManagerPciPlugin_15_0::tBusAddress;
    using tAnchorIdentity = nZoTavManagerPciPlugin_15_0::tAnchorIdentity;
    using tDeviceRecord = nZoTavManagerPciPlugin_15_0::tDeviceRecord;

    // The names and the explanation are those of the model whose turn it is: whoever matches
    // several puts others in their place when a turn begins. All arguments must outlive the
    // recorder. The bus says what stands where no bridge does.
    MatchRecorder(iPciBrdWrapper_ex& wrapper, const pcibus::Bus& bus, const PartNames& names,
                  Explanation& explanation)
        : wrapper_(wrapper), bus_(bus), names_(names), explanation_(explanation) {}

    void onModel(std::uint32_t index) override;
    void onModelFailed(const std::exception& exception) override;
    void onAnchor(const tAnchorIdentity& anchor) override;
    void onDeviceAnchor(const tBusAddress& address) override;
    void onDeviceAnchorPlaced(const tBusAddress& address, const cSlotPath& slotPath) override;
    void onCandidates(const Handles& candidates, std::size_t required) override;
    void onCandidate(std::uint32_t bridge, const cSlotPath& slotPath) override;
    void onDescribedBridge(const tBridgeDescription& description, std::uint32_t bridge,
                           bool counts) override;
    void onCandidateCounted(const Handles& matched, std::size_t required) override;
    void onWalk(const tBusAddress& address, const cSlotPath& anchor) override;
    void onReportingBridge(const tBridgeDescription& description, std::uint32_t bridge) override;
    void onUpstreamPort(const tBridgeDescription& description, std::uint32_t bridge) override;
    void onDownstreamPort(const tBridgeDescription& description, std::uint32_t bridge) override;
    void onPortLabels(std::uint32_t linkWidth, std::uint32_t wanted, std::size_t left) override;
    void onLabelsLeft(std::size_t left) override;
    void onDevice(const tBusAddress& address, const cSlotPath& anchor,
                  const tDeviceRecord& record) override;
    void onLookUp(const tBridgeDescription& description) override;

private:
    Explanation& explanation() { return explanation_; }
    // The one at work; null before the first.
    Candidate* current();
    void step(Step step);
    void failStep(std::string condition, std::string expected, std::string found);
    [[nodiscard]] std::string partName(const tBridgeDescription& description) const;
    [[nodiscard]] std::string bridgeText(std::uint32_t bridge);
    [[nodiscard]] std::string placeText(const tBridgeDescription& description) const;
    void setAddress(Candidate& candidate);

    iPciBrdWrapper_ex& wrapper_;
    const pcibus::Bus& bus_;
    const PartNames& names_;
    Explanation& explanation_;
    std::size_t anchor_ = 0;       // position of the anchor being searched
    std::size_t anchorsBegun_ = 0; // of this model
    std::size_t candidate_ = kNone;
    std::size_t labelsTaken_ = 0;
    std::string lookingFor_; // the section being looked up; empty when none is
    bool failedStep_ = false;
    bool naming_ = false;  // the walk is done but for the name
    bool placing_ = false; // the slot path of an anchor that is no bridge is being derived

    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    std::string anchorPath_; // of the candidate at work, machine form
};

} // namespace tavctl::explain
