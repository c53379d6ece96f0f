// Hears what the matching of models comes across, condition by condition in the order in which they
// are tested. Nobody listens to the plug-in; a host that explains itself hands an observer in and
// changes nothing by it. Every operation does nothing unless overridden, and must not raise.
#pragma once

#include "pxidrivertools/cSlotPath.h"
#include "quil/tBusAddress.h"
#include "source/deviceRecord.h"
#include "source/modelDescription.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <set>
#include <span>

namespace nZoTavManagerPciPlugin_15_0 {

class MatchObserver {
public:
    using cSlotPath = nZoPxiDriverTools_1_0::cSlotPath;
    using Handles = std::set<std::uint32_t>;

    virtual ~MatchObserver() = default;

    // A model's turn begins; it ends with what ended it early, if anything did.
    virtual void onModel(std::uint32_t) {}
    virtual void onModelFailed(const std::exception&) {}

    // The search for one of the model's anchors begins.
    virtual void onAnchor(const tAnchorIdentity&) {}

    // An anchor that is no bridge: a function with its identifiers, and then its slot path.
    virtual void onDeviceAnchor(const tBusAddress&) {}
    virtual void onDeviceAnchorPlaced(const tBusAddress&, const cSlotPath&) {}

    // An anchor that is a bridge: all bridges with its identifiers, and how many described bridges
    // must be found for one of them to qualify.
    virtual void onCandidates(const Handles&, std::size_t) {}
    // One of them is tried. For each described bridge that is looked for: the bridge that stands in
    // its place or kNoHandle, which gives the candidate up, and whether it counts.
    virtual void onCandidate(std::uint32_t, const cSlotPath&) {}
    virtual void onDescribedBridge(const tBridgeDescription&, std::uint32_t, bool) {}
    // The bridges found, itself included; it qualifies when they are as many as required.
    virtual void onCandidateCounted(const Handles&, std::size_t) {}

    // The walk from an anchor found begins.
    virtual void onWalk(const tBusAddress&, const cSlotPath&) {}
    // The bridge at whose address the device is to be reported, or kNoHandle.
    virtual void onReportingBridge(const tBridgeDescription&, std::uint32_t) {}
    // The bridge of the upstream port and of each downstream port that is looked at, or kNoHandle.
    virtual void onUpstreamPort(const tBridgeDescription&, std::uint32_t) {}
    virtual void onDownstreamPort(const tBridgeDescription&, std::uint32_t) {}
    // What that port takes: its link width (0 when the model gives no width per label), the labels
    // that it asks for and those that are left for it.
    virtual void onPortLabels(std::uint32_t, std::uint32_t, std::size_t) {}
    // The downstream ports that are left when the labels are done; they are not looked for.
    virtual void onPortsLeft(std::span<const tBridgeDescription>) {}
    // The labels that are left when the ports are done.
    virtual void onLabelsLeft(std::size_t) {}
    // The device is listed that the walk from this anchor found.
    virtual void onDevice(const tBusAddress&, const cSlotPath&, const tDeviceRecord&) {}

    // A place is about to be looked up; what it leads to follows, unless it raises.
    virtual void onLookUp(const tBridgeDescription&) {}
};

// The observer for a build that nobody listens to. It has no state, so that it can be shared.
inline MatchObserver& noObserver() {
    static MatchObserver observer;
    return observer;
}

} // namespace nZoTavManagerPciPlugin_15_0
