#include "tavctl/describe/settleLabels.h"

#include "tavctl/bus/busQueries.h"
#include "tavctl/describe/lanes.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>

namespace tavctl::describe {

namespace {

std::size_t widthAt(const pcibus::Bus& bus, const std::string& path) {
    const pcibus::PciFunction* const port = functionAtSlotPath(bus, path);
    return port == nullptr ? 0 : port->linkWidth;
}

// By the lanes that somebody has asked for.
std::string unevenPort(const Draft& draft, const pcibus::Bus& bus,
                       const std::vector<std::string>& portPaths, std::int32_t lanes) {
    for (std::size_t i = 0; i < draft.ports.size(); ++i) {
        const pcibus::PciFunction* const port = functionAtSlotPath(bus, portPaths[i]);
        if (port == nullptr)
            continue; // it comes with what is plugged in
        std::string trouble = lanesTrouble(*port, "port", lanes);
        const std::size_t room = port->linkWidth / static_cast<std::size_t>(lanes);
        if (trouble.empty() && draft.ports[i].labels.size() != room)
            trouble = fmt::format("port {} has {}, which are {} of {}, and has {}",
                                  pcibus::addressText(*port), counted(port->linkWidth, "lane"),
                                  counted(room, "connector"), lanes,
                                  counted(draft.ports[i].labels.size(), "label"));
        if (!trouble.empty())
            return trouble;
    }
    return {};
}

} // namespace

std::string settleLabels(Draft& draft, const pcibus::Bus& bus, const std::string& anchorPath,
                         const std::vector<std::string>& portPaths, std::int32_t lanes) {
    if (lanes != 0)
        return unevenPort(draft, bus, portPaths, lanes);
    const bool several = std::any_of(draft.ports.begin(), draft.ports.end(),
                                     [](const auto& port) { return port.labels.size() > 1; });
    if (!several)
        return {};
    std::size_t perLabel = 0;
    for (std::size_t i = 0; i < draft.ports.size(); ++i) {
        const std::size_t labels = draft.ports[i].labels.size();
        const std::size_t width = widthAt(bus, portPaths[i]);
        const std::size_t here = width / labels;
        if (perLabel == 0)
            perLabel = here;
        if (here == 0 || here != perLabel || width / perLabel != labels)
            return fmt::format("port {} is {} wide and has {}; all ports must have the same number "
                               "of lanes for each label",
                               inQuotes(draft.ports[i].labels.front()), counted(width, "lane"),
                               counted(labels, "label"));
    }
    draft.linkWidthPerLabel = static_cast<std::int32_t>(perLabel);
    draft.upstreamLabels.clear();
    for (std::size_t i = 1; i <= widthAt(bus, anchorPath) / perLabel; ++i)
        draft.upstreamLabels.push_back(fmt::format("HOST{}", i));
    return {};
}

} // namespace tavctl::describe
