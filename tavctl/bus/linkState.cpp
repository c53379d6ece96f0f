#include "tavctl/bus/linkState.h"

#include "tavctl/bus/portTypes.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>

namespace tavctl {

namespace {

using pcibus::Link;
using pcibus::PciFunction;
using pcibus::PortType;

bool hasLink(const Link& link) {
    return link.maximumWidth != 0 || link.width != 0;
}

// Whether the link of a bridge is the one below it.
bool leadsDown(const DomainBus& domain, const PciFunction& bridge) {
    const PortType type = portTypeOf(domain, bridge);
    return type == PortType::rootPort || type == PortType::downstreamPort;
}

std::uint8_t weaker(std::uint8_t a, std::uint8_t b) {
    return std::min(a, b); // 0, not known, when one of them is
}

std::string speedText(const LinkState& link) {
    std::string able = linkSpeedName(link.isSlow() ? link.ableSpeed : link.speed);
    if (!link.isSlow())
        return able;
    std::string runs = linkSpeedName(link.speed);
    constexpr std::string_view kUnit = " GT/s";
    if (runs.ends_with(kUnit) && able.ends_with(kUnit))
        runs.resize(runs.size() - kUnit.size());
    return fmt::format("{} of {}", runs, able);
}

} // namespace

LinkState linkBelow(const DomainBus& domain, const PciFunction& port) {
    const pcibus::Bus& bus = domain.bus();
    LinkState state;
    if (!port.isBridge() || port.secondaryBus == 0 || bus.parentOfBus(port.secondaryBus) != &port)
        return state;
    const auto below = bus.functionsOn(port.secondaryBus);
    const Link& link = domain.linkOf(port);
    if (below.empty() || !hasLink(link) || !leadsDown(domain, port))
        return state;
    const Link& end = domain.linkOf(below.front());
    state.width = link.width != 0 ? link.width : end.width;
    state.speed = link.speed != 0 ? link.speed : end.speed;
    state.ableWidth = weaker(link.maximumWidth, end.maximumWidth);
    state.ableSpeed = weaker(link.maximumSpeed, end.maximumSpeed);
    return state;
}

LinkState linkAbove(const DomainBus& domain, const PciFunction& function) {
    const PciFunction* const above = domain.bus().parentOfBus(function.bus);
    return above == nullptr ? LinkState() : linkBelow(domain, *above);
}

std::optional<double> linkTransfers(std::int32_t code) {
    constexpr std::array kSpeeds{2.5e9, 5e9, 8e9, 16e9, 32e9, 64e9};
    if (code < 1 || static_cast<std::size_t>(code) > kSpeeds.size())
        return std::nullopt;
    return kSpeeds[static_cast<std::size_t>(code) - 1];
}

std::string linkSpeedName(std::int32_t code) {
    constexpr double kGiga = 1e9;
    const auto transfers = linkTransfers(code);
    return transfers ? fmt::format("{} GT/s", *transfers / kGiga)
                     : fmt::format("speed code {}", code);
}

std::string linkText(const LinkState& link) {
    std::string text;
    if (link.width != 0)
        text = link.isNarrow() ? fmt::format("x{} of x{}", link.width, link.ableWidth)
                               : fmt::format("x{}", link.width);
    if (link.speed != 0)
        text.append(text.empty() ? "" : " ").append(speedText(link));
    return text;
}

} // namespace tavctl
