// Writes down the devices that the plug-in's code lists, and where it passes others over.
#pragma once

#include "tavctl/match/deviceRecorder.h"
#include "tavctl/mock/machine.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace tavctl::mock {

class MatchFaults : public DeviceRecorder {
public:
    using DeviceRecorder::DeviceRecorder;

    // Why a model was not listed by this anchor, in a sentence.
    [[nodiscard]] std::string why(std::size_t model, const Function& anchor,
                                  std::uint8_t hop) const;

    void onModel(std::uint32_t index) override;
    void onModelFailed(const std::exception& exception) override;
    void onCandidate(std::uint32_t bridge, const cSlotPath& slotPath) override;
    void onDescribedBridge(const tBridgeDescription& description, std::uint32_t bridge,
                           bool counts) override;
    void onCandidateCounted(const Handles& matched, std::size_t required) override;
    void onDeviceAnchor(const tBusAddress& address) override;
    void onWalk(const tBusAddress& address, const cSlotPath& anchor) override;
    void onReportingBridge(const tBridgeDescription& description, std::uint32_t bridge) override;
    void onPortLabels(std::uint32_t linkWidth, std::uint32_t wanted, std::size_t left) override;
    void onLabelsLeft(std::size_t left) override;

private:
    void note(const std::string& fault);

    std::uint32_t model_ = 0;
    std::uint32_t at_ = 0; // the function that is tried
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::string> faults_;
    std::map<std::uint32_t, std::string> ends_; // of models that ended early
};

} // namespace tavctl::mock
