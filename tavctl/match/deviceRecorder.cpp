#include "tavctl/match/deviceRecorder.h"

#include "source/bridgePlace.h"
#include "tavctl/bus/busQueries.h"

#include <exception>
#include <utility>

namespace tavctl {

using namespace nZoTavManagerPciPlugin_15_0;
using nZoPciBrdWrapper_15_0::kNoHandle;
using nZoPxiDriverTools_1_0::cSlotPath;

// None where no bridge is, and for one that the bridge library does not tell of.
std::optional<tBusAddress> DeviceRecorder::addressOf(std::uint32_t bridge) {
    if (bridge == kNoHandle)
        return std::nullopt;
    try {
        tBusAddress address;
        wrapper_.GetBridgeAddress(bridge, &address.bus, &address.device, &address.function);
        return address;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::optional<cSlotPath> DeviceRecorder::placeOf(const tBridgeDescription& description) const {
    cSlotPath place(anchor_.value());
    nZOQUIL000::tErrorStatus status;
    place.ApplyRelativePath(description.traversalMap, status);
    return status.failed() ? std::nullopt : std::optional(std::move(place));
}

void DeviceRecorder::onModel(std::uint32_t index) {
    model_ = index;
}

void DeviceRecorder::onWalk(const tBusAddress&, const cSlotPath& anchor) {
    anchor_.emplace(anchor);
    upstreamPort_.reset();
    ports_.clear();
    labels_.clear();
}

void DeviceRecorder::onUpstreamPort(const tBridgeDescription&, std::uint32_t bridge) {
    upstreamPort_ = addressOf(bridge);
}

void DeviceRecorder::onDownstreamPort(const tBridgeDescription& description, std::uint32_t bridge) {
    ports_.push_back({placeOf(description), addressOf(bridge), {}});
    labels_.push_back(0);
}

void DeviceRecorder::onPortLabels(std::uint32_t, std::uint32_t wanted, std::size_t) {
    if (!labels_.empty()) // else they are the upstream port's, which have no entries
        labels_.back() = wanted;
}

// The walk has no use for these; whoever looks at a picture of the device has.
void DeviceRecorder::onPortsLeft(std::span<const tBridgeDescription> ports) {
    for (const tBridgeDescription& port : ports) {
        try {
            onDownstreamPort(port,
                             findDescribedBridge(anchor_.value(), port.traversalMap, wrapper_));
        } catch (const std::exception&) {
            ports_.emplace_back();
            labels_.push_back(0);
        }
    }
}

void DeviceRecorder::onDevice(const tBusAddress& address, const cSlotPath& anchor,
                              const tDeviceRecord& record) {
    MatchedDevice device;
    device.record = record;
    device.model = model_;
    device.address = address;
    device.slotPath = slotPathText(anchor);
    device.upstreamPort = upstreamPort_;
    device.ports = std::move(ports_);
    auto entry = record.ports.begin();
    for (std::size_t i = 0; i < device.ports.size(); ++i) {
        const auto end = entry + static_cast<std::ptrdiff_t>(labels_[i]);
        device.ports[i].entries.assign(entry, end);
        entry = end;
    }
    devices_.push_back(std::move(device));
}

} // namespace tavctl
