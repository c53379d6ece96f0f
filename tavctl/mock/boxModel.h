// A description as mock needs it: the model, and what its parts are called and are.
#pragma once

#include "tavctl/description/description.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tavctl::mock {

using nZoTavManagerPciPlugin_15_0::tAnchorIdentity;
using nZoTavManagerPciPlugin_15_0::tBridgeDescription;
using nZoTavManagerPciPlugin_15_0::tModelDescription;
using nZoTavManagerPciPlugin_15_0::tPciIds;

// One described bridge.
struct DescribedBridge {
    enum class Kind { upstreamPort, downstreamPort, internalBridge };
    Kind kind = Kind::internalBridge;
    std::string section;
    std::string traversalMap;
    tPciIds ids;
    bool isCounted = false; // by the search for this anchor
    bool isOptional = false;
    bool isReported = false;
};

struct BoxModel {
    BoxModel() = default;
    // Of a description that loads.
    explicit BoxModel(lint::Description&& description);

    std::string file;
    tModelDescription model;
    std::vector<std::string> anchorSections;

    // What is described for the anchor of that number: the upstream port, the downstream ports in
    // their order, then the internal bridges. Where the search looks for the anchor's identifiers
    // these are the bridge's; else its own.
    [[nodiscard]] std::vector<DescribedBridge> bridges(std::size_t anchor) const;

private:
    std::vector<std::string> portSections_;
    std::vector<std::string> internalSections_;
    std::vector<tPciIds> portIds_; // their own
    std::vector<tPciIds> internalIds_;
};

} // namespace tavctl::mock
