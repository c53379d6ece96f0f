#include "tavctl/draw/linkText.h"

#include "tavctl/draw/dotText.h"
#include "tavctl/draw/style.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <vector>

namespace tavctl {

namespace {

using pcibus::Link;
using pcibus::PciFunction;
using pcibus::PortType;

// What one end can; empty when it is not known.
std::string mostOf(const Link& link) {
    std::string text;
    if (link.maximumWidth != 0)
        text = fmt::format("x{}", link.maximumWidth);
    if (link.maximumSpeed != 0)
        text += fmt::format("{}{}", text.empty() ? "" : " ", linkSpeedName(link.maximumSpeed));
    return text;
}

// Nothing of a link that is the one above the bridge.
std::string mostBelow(const BusTreeView& view, const PciFunction& bridge) {
    const Link& link = view.domain().linkOf(bridge);
    const bool isAbove = link.port == PortType::upstreamPort || link.port == PortType::other;
    return isAbove || !bridge.isBridge() ? std::string() : mostOf(link);
}

} // namespace

LinkText linkTextOf(const BusTreeView& view, const PciFunction& bridge) {
    const LinkState state = linkBelow(view.domain(), bridge);
    const std::string most = mostBelow(view, bridge);
    if (!state.isKnown())
        return most.empty() ? LinkText()
                            : LinkText{fmt::format("up to {}", most),
                                       fmt::format("this end: up to {}", most), false};
    std::vector<std::string> lines{fmt::format("runs at {}", linkText(state))};
    if (state.isDegraded())
        lines.front() += ", below what both ends can";
    if (!most.empty())
        lines.push_back(fmt::format("this end: up to {}", most));
    if (const auto below = view.below(bridge); !below.empty()) {
        if (const std::string other = mostOf(view.domain().linkOf(below.front())); !other.empty())
            lines.push_back(fmt::format("the other end: up to {}", other));
    }
    return {linkText(state), separated(lines, "\n"), state.isDegraded()};
}

std::string linkMarkup(const LinkText& link) {
    if (link.text.empty())
        return " ";
    return fontText(link.isReduced ? "COLOR=\"#b45309\" POINT-SIZE=\"9\"" : kFaintFont, link.text);
}

} // namespace tavctl
