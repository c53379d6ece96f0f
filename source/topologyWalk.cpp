#include "source/topologyWalk.h"

#include "source/bridgePlace.h"
#include "source/tavStatus.h"

#include <cstddef>
#include <list>
#include <string>
#include <vector>

namespace nZoTavManagerPciPlugin_15_0 {

namespace {

using nZoPciBrdWrapper_15_0::iPciBrdWrapper_ex;
using nZoPciBrdWrapper_15_0::kAttributeLinkSpeed;
using nZoPciBrdWrapper_15_0::kAttributeLinkWidth;
using nZoPciBrdWrapper_15_0::kAttributeSecondaryBus;
using nZoPciBrdWrapper_15_0::kNoHandle;
using nZoPxiDriverTools_1_0::cSlotPath;

constexpr const char* kFile = "source\\cPciTavPluginCache";

// The model's connector labels, taken one after the other.
class LabelIterator {
public:
    explicit LabelIterator(const std::list<std::string>& labels)
        : next_(labels.begin()), left_(labels.size()) {}

    [[nodiscard]] bool atEnd() const { return left_ == 0; }
    [[nodiscard]] std::size_t left() const { return left_; }

    const std::string& take() {
        if (atEnd())
            raiseSoftwareFault(kFile, kMessageLabelsRanOut);
        --left_;
        return *next_++;
    }

private:
    std::list<std::string>::const_iterator next_;
    std::size_t left_;
};

// A bridge is open while its link is read, and closed again whatever happens meanwhile.
class OpenedBridge {
public:
    OpenedBridge(iPciBrdWrapper_ex& bridgeWrapper, std::uint32_t bridge)
        : bridgeWrapper_(bridgeWrapper), bridge_(bridge) {
        bridgeWrapper_.OpenBridge(bridge_);
    }
    ~OpenedBridge() { bridgeWrapper_.CloseBridge(bridge_); }
    OpenedBridge(const OpenedBridge&) = delete;
    OpenedBridge& operator=(const OpenedBridge&) = delete;

private:
    iPciBrdWrapper_ex& bridgeWrapper_;
    std::uint32_t bridge_;
};

class Walk {
public:
    Walk(const cSlotPath& anchor, iPciBrdWrapper_ex& bridgeWrapper, const iPciModelInfoDb& models,
         std::uint32_t modelIndex, MatchObserver& observer)
        : anchor_(anchor), bridgeWrapper_(bridgeWrapper), models_(models), modelIndex_(modelIndex),
          observer_(observer) {}

    tBusAddress reportedAddress(const tBusAddress& anchorAddress) {
        std::vector<tBridgeDescription> bridges;
        models_.GetAllBridges(modelIndex_, bridges);
        tBusAddress reported = anchorAddress;
        for (const tBridgeDescription& description : bridges) {
            if (!description.reportAddressFromThisBridge)
                continue;
            const std::uint32_t bridge = find(description);
            observer_.onReportingBridge(description, bridge);
            bridgeWrapper_.GetBridgeAddress(bridge, &reported.bus, &reported.device,
                                            &reported.function);
        }
        return reported;
    }

    // Fills the walk value and the ports.
    void assignLabels(tDeviceRecord& record) {
        std::list<std::string> labels;
        models_.GetConnectorLabels(modelIndex_, labels);
        models_.GetLinkWidthPerLabel(modelIndex_, linkWidthPerLabel_);
        record.linkWidthPerLabel = static_cast<std::uint32_t>(linkWidthPerLabel_);
        LabelIterator label(labels);
        passUpstreamPort(label, record);
        addDownstreamPorts(label, record);
        observer_.onLabelsLeft(label.left());
        if (!label.atEnd())
            raiseSoftwareFault(kFile, kMessageLabelsRemain);
    }

private:
    std::uint32_t find(const tBridgeDescription& description) {
        observer_.onLookUp(description);
        return findDescribedBridge(anchor_, description.traversalMap, bridgeWrapper_);
    }

    std::uint32_t attribute(std::uint32_t bridge, std::uint32_t number) {
        std::uint32_t value = 0;
        bridgeWrapper_.GetAttributeU32(bridge, number, value);
        return value;
    }

    // Divides as unsigned numbers: a negative link width per label leaves a port without labels.
    [[nodiscard]] std::uint32_t labelCount(std::uint32_t linkWidth) const {
        return linkWidth / static_cast<std::uint32_t>(linkWidthPerLabel_);
    }

    void tellLabels(std::uint32_t linkWidth, std::uint32_t wanted, const LabelIterator& label) {
        observer_.onPortLabels(linkWidth, wanted, label.left());
    }

    // The upstream port takes labels, but has no port entries.
    void passUpstreamPort(LabelIterator& label, tDeviceRecord& record) {
        tBridgeDescription upstreamPort;
        models_.GetUpstreamPort(modelIndex_, upstreamPort);
        if (upstreamPort.traversalMap == kNoText)
            return;
        const std::uint32_t bridge = find(upstreamPort);
        observer_.onUpstreamPort(upstreamPort, bridge);
        std::uint8_t bus = 0;
        bridgeWrapper_.GetBridgeAddress(bridge, &bus, nullptr, nullptr);
        if (bus != 0)
            record.walkValue = bus;
        if (!models_.HasLinkWidthPerLabel(modelIndex_)) {
            tellLabels(0, 1, label);
            label.take();
            return;
        }
        const OpenedBridge opened(bridgeWrapper_, bridge);
        const std::uint32_t linkWidth = attribute(bridge, kAttributeLinkWidth);
        tellLabels(linkWidth, labelCount(linkWidth), label);
        for (auto n = labelCount(linkWidth); n > 0; --n)
            label.take();
    }

    void addDownstreamPorts(LabelIterator& label, tDeviceRecord& record) {
        std::vector<tBridgeDescription> ports;
        models_.GetDownstreamPorts(modelIndex_, ports);
        for (auto port = ports.begin(); port != ports.end(); ++port) {
            if (label.atEnd()) {
                observer_.onPortsLeft({port, ports.end()});
                return;
            }
            const std::uint32_t bridge = find(*port);
            observer_.onDownstreamPort(*port, bridge);
            if (bridge != kNoHandle)
                addPort(bridge, label, record);
        }
    }

    void addPort(std::uint32_t bridge, LabelIterator& label, tDeviceRecord& record) {
        const std::uint32_t secondaryBus = attribute(bridge, kAttributeSecondaryBus);
        if (!models_.HasLinkWidthPerLabel(modelIndex_)) {
            tellLabels(0, 1, label);
            record.ports.push_back({label.take(), secondaryBus, 0, 0});
            return;
        }
        const OpenedBridge opened(bridgeWrapper_, bridge);
        const std::uint32_t linkWidth = attribute(bridge, kAttributeLinkWidth);
        const std::uint32_t linkSpeed = attribute(bridge, kAttributeLinkSpeed);
        tellLabels(linkWidth, labelCount(linkWidth), label);
        for (auto n = labelCount(linkWidth); n > 0; --n)
            record.ports.push_back({label.take(), secondaryBus, linkWidth, linkSpeed});
    }

    const cSlotPath& anchor_;
    iPciBrdWrapper_ex& bridgeWrapper_;
    const iPciModelInfoDb& models_;
    std::uint32_t modelIndex_;
    MatchObserver& observer_;
    std::int32_t linkWidthPerLabel_ = 0;
};

// The name that the slot already has for this model, or a new one, which is stored.
std::string terminalNameFor(const cSlotPath& anchor, const std::string& model,
                            const std::string& base, cTerminalNameDb& terminalNames) {
    std::string name;
    if (!terminalNames.Matches(anchor, model, base, name)) {
        terminalNames.NextFreeName(base, name);
        terminalNames.Store(anchor, model, name);
    }
    return name;
}

} // namespace

tDeviceRecord walkTopology(const tBusAddress& address, const cSlotPath& anchor,
                           cTerminalNameDb& terminalNames, iPciBrdWrapper_ex& bridgeWrapper,
                           const iPciModelInfoDb& models, std::uint32_t modelIndex,
                           MatchObserver& observer) {
    observer.onWalk(address, anchor);
    Walk walk(anchor, bridgeWrapper, models, modelIndex, observer);
    tDeviceRecord record;
    const tBusAddress reported = walk.reportedAddress(address);
    record.bus = reported.bus;
    record.device = reported.device;
    record.function = reported.function;
    walk.assignLabels(record);
    record.modelName = models.GetModel(modelIndex).model;
    record.deviceCategory = static_cast<std::uint32_t>(models.GetDeviceCategory(modelIndex));
    record.terminalName = terminalNameFor(anchor, record.modelName,
                                          models.GetTerminalNameBase(modelIndex), terminalNames);
    observer.onDevice(address, anchor, record);
    return record;
}

} // namespace nZoTavManagerPciPlugin_15_0
