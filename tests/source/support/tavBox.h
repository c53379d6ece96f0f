// A box with a PCI Express switch as it stands on a bus, and the model that describes it: the
// switch's upstream bridge is the anchor, its downstream bridges are the labelled ports.
#pragma once

#include "tests/source/support/modelTable.h"
#include "tests/support/busBuilder.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace testsupport {

inline constexpr Ids kRootPortIds{0x8086, 0xA110, 0x1043, 0x836B};
inline constexpr Ids kUpIds{0x10B5, 0x8609, 0x1234, 0x0001};
inline constexpr Ids kDownIds{0x10B5, 0x8609, 0x1234, 0x0002};
inline constexpr Ids kCardIds{0x1172, 0xE001, 0x1234, 0x0010};

// Puts a box below a root port of its own. Its ports are devices 1, 2, ... of the switch.
struct TavBox {
    BusBuilder::Node port;
    BusBuilder::Node up;
    std::vector<BusBuilder::Node> downs;

    struct Shape {
        Ids upIds = kUpIds;
        Ids downIds = kDownIds;
        std::vector<unsigned> widths = {8, 4}; // of the ports
        unsigned upWidth = 8;
        unsigned speed = 2;
    };

    TavBox(BusBuilder& machine, unsigned rootDevice) : TavBox(machine, rootDevice, Shape{}) {}
    TavBox(BusBuilder& machine, unsigned rootDevice, const Shape& shape)
        : port(machine.rootPort(0, rootDevice, 0, kRootPortIds, 16, 3)),
          up(machine.bridge(port, 0, 0, shape.upIds, shape.upWidth, shape.speed)) {
        unsigned device = 1;
        for (const unsigned width : shape.widths)
            downs.push_back(machine.bridge(up, device++, 0, shape.downIds, width, shape.speed));
    }
};

// "d1f0", "d2f0" and so on, and "P1", "P2" and so on.
inline std::string portMap(std::size_t port) {
    std::string map = "d";
    map += std::to_string(port);
    return map += "f0";
}
inline std::string portLabel(std::size_t port) {
    std::string label = "P";
    return label += std::to_string(port);
}

// A model with this many ports and no link width per label. The upstream port stands for the anchor
// and takes the first label.
inline ModelBuilder boxModel(const std::string& name, std::size_t ports = 2, Ids upIds = kUpIds,
                             Ids downIds = kDownIds) {
    ModelBuilder model(name);
    std::list<std::string> labels{"Host"};
    model.anchor(upIds).upstreamPort({"", upIds});
    for (std::size_t port = 1; port <= ports; ++port) {
        model.downstreamPort({portMap(port), downIds});
        labels.push_back(portLabel(port));
    }
    return model.labels(labels);
}

} // namespace testsupport
