// Which kind of PCI Express port each bridge is, for telling a box's own bridge from the one that
// the box is plugged into.
#pragma once

#include "pcibus/bus.h"
#include "pcibus/functionSink.h"

#include <cstdint>
#include <unordered_map>

namespace tavctl {

enum class PortType {
    unknown,
    root,
    upstream,
    downstream,
    other, // no such port: a conventional bridge, or one between PCI Express and conventional buses
};

class PortTypes {
public:
    // What one function's bytes say; what a reader of buses gives its sink. Bridges of domain 0 are
    // remembered.
    void add(const pcibus::SeenFunction& seen);

    // By its bytes, and where those are not all there by where it stands and what has a link. Only
    // on a root bus is there a root port, whatever a bridge says.
    [[nodiscard]] PortType of(const pcibus::Bus& bus, const pcibus::PciFunction& bridge) const;

private:
    std::unordered_map<std::uint32_t, PortType> byHandle_; // those that are known
};

} // namespace tavctl
