// Writes down the devices that the plug-in's code lists while it matches models.
#pragma once

#include "pciBrdWrapper/iPciBrdWrapper_ex.h"
#include "source/matchObserver.h"
#include "tavctl/match/matchedDevice.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace tavctl {

class DeviceRecorder : public nZoTavManagerPciPlugin_15_0::MatchObserver {
public:
    using iPciBrdWrapper_ex = nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0::iPciBrdWrapper_ex;
    using tBridgeDescription = nZoTavManagerPciPlugin_15_0::tBridgeDescription;
    using tBusAddress = nZoTavManagerPciPlugin_15_0::tBusAddress;
    using tDeviceRecord = nZoTavManagerPciPlugin_15_0::tDeviceRecord;

    // The wrapper is the one that is matched with. It must outlive the recorder.
    explicit DeviceRecorder(iPciBrdWrapper_ex& wrapper) : wrapper_(wrapper) {}

    // In the order in which the plug-in lists them. Leaves none behind.
    [[nodiscard]] std::vector<MatchedDevice> takeDevices() { return std::move(devices_); }

    void onModel(std::uint32_t index) override;
    void onWalk(const tBusAddress& address, const cSlotPath& anchor) override;
    void onUpstreamPort(const tBridgeDescription& description, std::uint32_t bridge) override;
    void onDownstreamPort(const tBridgeDescription& description, std::uint32_t bridge) override;
    void onPortLabels(std::uint32_t linkWidth, std::uint32_t wanted, std::size_t left) override;
    void onPortsLeft(std::span<const tBridgeDescription> ports) override;
    void onDevice(const tBusAddress& address, const cSlotPath& anchor,
                  const tDeviceRecord& record) override;

private:
    [[nodiscard]] std::optional<tBusAddress> addressOf(std::uint32_t bridge);
    [[nodiscard]] std::optional<cSlotPath> placeOf(const tBridgeDescription& description) const;

    iPciBrdWrapper_ex& wrapper_;
    std::uint32_t model_ = 0;
    // Of the walk at work: where it begins, and what it came across.
    std::optional<cSlotPath> anchor_;
    std::optional<tBusAddress> upstreamPort_;
    std::vector<MatchedPort> ports_;
    std::vector<std::size_t> labels_; // how many each of those ports takes
    std::vector<MatchedDevice> devices_;
};

} // namespace tavctl
