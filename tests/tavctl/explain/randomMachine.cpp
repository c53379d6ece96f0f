#include "tests/tavctl/explain/randomMachine.h"

#include "pcibus/bus.h"
#include "pcibus/position.h"
#include "tavctl/explain/changes.h"
#include "tests/tavctl/explain/descriptionMutations.h"

#include <cstdio>
#include <sstream>

namespace testtavctl {

namespace {

using testsupport::BusBuilder;
using testsupport::Ids;

// Two makes of switch, and a few parts of each.
Ids someIds(std::mt19937& random) {
    return {static_cast<std::uint16_t>(0x1000 + below(random, 2)),
            static_cast<std::uint16_t>(0x20 + below(random, 2)),
            static_cast<std::uint16_t>(below(random, 4) == 0 ? 0x1234 : 0), 0};
}

unsigned someWidth(std::mt19937& random) {
    constexpr unsigned kWidths[] = {1, 4, 4, 8, 8, 16};
    return kWidths[below(random, 6)];
}

void addSwitch(RandomMachine& machine, BusBuilder::Node parent, std::mt19937& random, int depth) {
    const auto upstream = machine.bus.bridge(parent, 0, 0, someIds(random), someWidth(random));
    machine.bridges.push_back(upstream);
    const Ids portIds = someIds(random);
    const std::size_t ports = 1 + below(random, 4);
    for (std::size_t i = 0; i < ports; ++i) {
        if (below(random, 8) == 0)
            continue;
        const auto port =
            machine.bus.bridge(upstream, static_cast<unsigned>(i), 0, portIds, someWidth(random));
        machine.bridges.push_back(port);
        if (depth > 0 && below(random, 4) == 0)
            addSwitch(machine, port, random, depth - 1);
        else if (below(random, 2) == 0)
            machine.endpoints.push_back(machine.bus.endpoint(port, 0, 0, someIds(random)));
    }
}

std::string idLines(const pcibus::PciFunction& function) {
    char text[96];
    std::snprintf(text, sizeof text, "Vid = %04X\nPid = %04X\nSsVid = %04X\nSsPid = %04X\n",
                  function.vendorId, function.deviceId, function.subsystemVendorId,
                  function.subsystemId);
    return text;
}

std::string quotedMap(const std::string& map) {
    return map.empty() ? "\"\"" : map;
}

} // namespace

RandomMachine randomMachine(std::mt19937& random) {
    RandomMachine machine;
    const std::size_t rootPorts = 1 + below(random, 3);
    for (std::size_t i = 0; i < rootPorts; ++i) {
        const auto port = machine.bus.rootPort(0, static_cast<unsigned>(i + 1), 0, someIds(random),
                                               someWidth(random));
        machine.bridges.push_back(port);
        addSwitch(machine, port, random, 2);
    }
    return machine;
}

std::string randomDescription(const RandomMachine& machine, std::mt19937& random,
                              const std::string& model) {
    const pcibus::Bus bus(machine.bus.functions(), pcibus::addressText);
    const bool byDevice = !machine.endpoints.empty() && below(random, 4) == 0;
    const auto& nodes = byDevice ? machine.endpoints : machine.bridges;
    const pcibus::PciFunction& anchor =
        *bus.find(machine.bus.handle(nodes[below(random, nodes.size())]));
    const pcibus::Position from = pcibus::positionOf(bus, anchor);
    const pcibus::PciFunction& top = anchor.isBridge() ? anchor : *bus.parentOfBus(anchor.bus);

    std::vector<const pcibus::PciFunction*> ports;
    for (const std::uint32_t child : bus.childrenOf(top)) {
        if (below(random, 8) != 0)
            ports.push_back(bus.find(child));
    }
    const bool hasUpstream = anchor.isBridge() && below(random, 3) != 0;
    const bool describesSelf = hasUpstream || below(random, 6) != 0;
    const std::size_t labels = ports.size() + (hasUpstream ? 1 : 0);
    const std::size_t given = below(random, 4) == 0 ? below(random, labels + 2) : labels;
    const bool byWidth = below(random, 4) == 0;

    std::ostringstream text;
    text << "[UpstreamTAV]\nModel = " << model << "\nDeviceCategory = PCI\nInternalBridges = "
         << (!hasUpstream && anchor.isBridge() && describesSelf ? "Self" : "\"\"")
         << "\nConnectorLabels = ";
    std::string list;
    for (std::size_t i = 0; i < given; ++i)
        list.append(list.empty() ? "L" : ",L").append(std::to_string(i));
    text << quotedMap(list) << "\nDownstreamPorts = ";
    list.clear();
    for (std::size_t i = 0; i < ports.size(); ++i)
        list.append(list.empty() ? "" : ",").append(std::to_string(i));
    text << quotedMap(list) << "\nHasUpstreamPort = " << (hasUpstream ? 1 : 0) << "\n";
    if (byWidth)
        text << "LinkWidthPerLabel = " << (below(random, 2) == 0 ? 4 : 8) << "\n";
    text << "[Anchor]\nPciHeaderType = " << (anchor.isBridge() ? 1 : 0) << "\n" << idLines(anchor);
    if (hasUpstream)
        text << "[UpstreamPort]\nIDsSameAs = Anchor\nTraversalMapFromAnchor = \"\"\n"
             << "ReportAddressFromThisBridge = " << below(random, 2) << "\n";
    text << "[InternalBridgeSelf]\nIDsSameAs = Anchor\nTraversalMapFromAnchor = \"\"\n";
    for (std::size_t i = 0; i < ports.size(); ++i) {
        std::string map = tavctl::explain::mapBetween(from, pcibus::positionOf(bus, *ports[i]));
        if (below(random, 12) == 0)
            map = "d9f0";
        text << "[DownstreamPort" << i << "]\nTraversalMapFromAnchor = " << quotedMap(map) << "\n"
             << idLines(*ports[i]);
        if (below(random, 10) == 0)
            text << "IsOptional = 1\n";
    }
    return text.str();
}

} // namespace testtavctl
