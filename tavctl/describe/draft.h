// A description in the making: the bridges of a box as the bus shows them, and what is printed at
// its connectors. Written out with comments, or turned into the model that the plug-in would load.
#pragma once

#include "pcibus/bus.h"
#include "source/modelDescription.h"

#include <string>
#include <vector>

namespace tavctl::describe {

struct DraftBridge {
    std::string name; // of its section, behind "InternalBridge" or "DownstreamPort"
    std::string map;
    nZoTavManagerPciPlugin_15_0::tPciIds ids;
    bool isOptional = false;
    std::vector<std::string> labels; // of a port; with a link width per label there may be several
    std::string remark;              // where it stands now and what is behind it
};

struct Draft {
    std::string model;
    std::string category;
    std::string terminalNameBase = "TAV";
    std::string origin; // the bridge that it was made from, for the first comment
    nZoTavManagerPciPlugin_15_0::tPciIds anchor;
    std::vector<std::string> upstreamLabels;
    std::int32_t linkWidthPerLabel = 0;
    std::vector<DraftBridge> internalBridges;
    std::vector<DraftBridge> ports; // in label order
    std::vector<std::string> notes; // further comments
    std::string unfinished;         // why the plug-in does not list the box by it; mostly empty
};

// How the box is to be read from the bus.
struct DraftRequest {
    std::string model; // empty: named after the identifiers
    std::string category = "SwitchboxTav";
    bool whole = false;                 // all bridges below belong to the box, not just the next
    std::int32_t linkWidthPerLabel = 0; // 0: one label a port
    bool watch = false;                 // the ports are found out by trying; none are taken now
};

// The box whose upstream port is `bridge`. Raises FailureException for ports that do not come out
// even by the lanes that are asked for.
Draft draftOf(const pcibus::Bus& bus, const pcibus::PciFunction& bridge,
              const DraftRequest& request);

// One of its bridges, without labels.
DraftBridge draftBridge(const pcibus::Bus& bus, const pcibus::PciFunction& anchor,
                        const pcibus::PciFunction& bridge, std::string name);

nZoTavManagerPciPlugin_15_0::tModelDescription modelOf(const Draft& draft);
std::string textOf(const Draft& draft);

} // namespace tavctl::describe
