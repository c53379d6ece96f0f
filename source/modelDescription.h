// What a hardware description file says about one model, as plain values.
#pragma once

#include "quil/tPciIds.h"

#include <cstdint>
#include <list>
#include <string>
#include <vector>

namespace nZoTavManagerPciPlugin_15_0 {

enum class eDeviceCategory : std::uint32_t { Pci = 10, Expresscard = 11, SwitchboxTav = 12 };

// Stands for "no value" wherever a text may be absent: a traversal map that was not read, a stored
// model or terminal name that is missing.
inline constexpr const char* kNoText = "_";

inline constexpr std::uint32_t kHeaderTypeBridge = 1;

// A PCI function by which a model is recognised: a bridge when the header type is
// kHeaderTypeBridge, any other function otherwise.
struct tAnchorIdentity {
    std::uint32_t headerType = 0;
    tPciIds ids;
};

struct tBridgeDescription {
    std::string traversalMap = kNoText; // relative slot path from the anchor
    tPciIds ids;
    bool reportAddressFromThisBridge = false;
    bool isOptional = false;
};

struct tModelDescription {
    std::string model;
    eDeviceCategory deviceCategory = eDeviceCategory::Pci;
    std::vector<tAnchorIdentity> anchors; // the primary one first, then the alternates
    std::list<std::string> connectorLabels;
    std::int32_t linkWidthPerLabel = 0; // lanes; 0: the model gives none
    tBridgeDescription upstreamPort;    // traversal map kNoText: the model has none
    // With alternate anchors: once per anchor, grouped by anchor, each copy with that anchor's ids.
    std::vector<tBridgeDescription> downstreamPorts;
    std::vector<tBridgeDescription> internalBridges;
    std::string terminalNameBase;
};

} // namespace nZoTavManagerPciPlugin_15_0
