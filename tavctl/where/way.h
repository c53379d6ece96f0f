// The way from the outside to a function: through which connector of which box, all the way up.
#pragma once

#include "tavctl/bus/pciNames.h"
#include "tavctl/view/markedBus.h"
#include "tavctl/where/systemNames.h"
#include "tavctl/words/json.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tavctl {

// A connector on the way, and the port that it leads to.
struct WayStep {
    std::size_t device = 0; // positions in the marked bus
    std::size_t port = 0;
};

// One function, and how it is reached.
struct Found {
    FunctionPlace place;
    std::vector<WayStep> way;    // the outermost connector first; none: in no connector
    std::vector<TreeMark> marks; // what it is itself to devices
    std::vector<SystemName> systemNames;
};

// Knows the ways on a bus. The arguments must outlive it.
class Ways {
public:
    Ways(const MarkedBus& marked, const SystemNames& systemNames);

    [[nodiscard]] Found to(const FunctionPlace& place) const;

    // To every function behind a port that is no bridge, or is a part of a device; in the order of
    // the bus.
    [[nodiscard]] std::vector<Found> behind(const WayStep& connector) const;

private:
    const MarkedBus& marked_;
    const SystemNames& systemNames_;
    BusTreeView view_; // of domain 0, where the devices are
};

// "TAV1 connector 2 > TAVCard1 connector LEFT > 06:00.0 RTL-8139 (eth2)", in one line without its
// end.
std::string wayAsText(const MarkedBus& marked, const PciNames& names, const Found& found);

Json wayAsJson(const MarkedBus& marked, const PciNames& names, const Found& found);

// "TAV1 connector 2", "TAV3 connectors B1 B2".
std::string connectorText(const MarkedBus& marked, const WayStep& step);

} // namespace tavctl
