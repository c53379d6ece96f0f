#include "tavctl/describe/boxBridge.h"

#include "tavctl/bus/portTypes.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/print.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <string>
#include <vector>

namespace tavctl::describe {

namespace {

std::string belowText(const std::vector<std::string>& below) {
    if (below.empty())
        return "no bridge stands below it";
    return fmt::format("right below it {} {}", below.size() == 1 ? "stands" : "stand",
                       enumerated(below));
}

} // namespace

void requireBoxBridge(const DomainBus& domain, const pcibus::PciFunction& bridge) {
    using pcibus::PortType;
    const pcibus::Bus& bus = domain.bus();
    std::vector<std::string> below;
    std::vector<std::string> upstreamPorts;
    for (const std::uint32_t handle : bus.childrenOf(bridge)) {
        const pcibus::PciFunction& child = *bus.findBridge(handle);
        below.push_back(pcibus::addressText(child));
        if (portTypeOf(domain, child) == PortType::upstreamPort)
            upstreamPorts.push_back(below.back());
    }
    const std::string address = pcibus::addressText(bridge);
    const PortType type = portTypeOf(domain, bridge);
    if (type == PortType::rootPort || type == PortType::downstreamPort) {
        const char* const kind = type == PortType::rootPort ? "root port" : "downstream port";
        if (upstreamPorts.size() == 1)
            throw FailureException({"describe",
                                    address,
                                    fmt::format("it is the {} that the box is plugged into; the "
                                                "box's upstream port is {}",
                                                kind, upstreamPorts.front()),
                                    {},
                                    {},
                                    "tavctl describe " + upstreamPorts.front()},
                                   ExitStatus::problemFound);
        complain(fmt::format("{} is a {}, which seldom is a box's own; {}", address, kind,
                             belowText(below)));
    } else if (type == PortType::unknown && bus.parentOfBus(bridge.bus) == nullptr &&
               below.size() == 1) {
        complain(fmt::format("{} may be a root port (its capabilities are not known), which seldom "
                             "is a box's own; {}",
                             address, belowText(below)));
    }
}

} // namespace tavctl::describe
