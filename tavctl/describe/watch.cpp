#include "tavctl/describe/watch.h"

#include "pxidrivertools/asciiText.h"
#include "tavctl/bus/busQueries.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <istream>
#include <map>
#include <ostream>
#include <set>
#include <utility>
#include <vector>

namespace tavctl::describe {

namespace {

using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::trim;

// What a function is, wherever its bus numbers have moved to.
using Functions = std::map<std::string, std::string>; // by slot path

Functions functionsBelow(const pcibus::Bus& bus, const std::string& anchorPath) {
    Functions functions;
    for (const pcibus::PciFunction& each : bus.functions()) {
        const std::string path = slotPathOf(bus, each);
        // Paths begin nearest the function: below the anchor are those that end with its hops.
        const std::string hops = anchorPath.substr(anchorPath.find(':') + 1);
        if (path.size() > anchorPath.size() && path.ends_with("," + hops) &&
            path.substr(0, path.find(':')) == anchorPath.substr(0, anchorPath.find(':')))
            functions[path] = fmt::format("{:04X}:{:04X}", each.vendorId, each.deviceId);
    }
    return functions;
}

// The path of the bridge above, "MR00:20" for "MR00:00,20".
std::string parentPath(const std::string& path) {
    const std::size_t root = path.find(':') + 1;
    const std::size_t comma = path.find(',');
    return comma == std::string::npos ? std::string()
                                      : path.substr(0, root) + path.substr(comma + 1);
}

// The port above a function below the anchor that came or went: the nearest bridge that was there
// all the time, or, when that is the anchor itself, the function next below it.
std::string portAbove(const std::string& path, const Functions& steady,
                      const std::string& anchorPath) {
    std::string below = path;
    for (std::string at = parentPath(path); !at.empty() && at != anchorPath;
         below = at, at = parentPath(at)) {
        if (steady.contains(at))
            return at;
    }
    return below;
}

[[noreturn]] void fail(const std::string& reason) {
    throw FailureException({"describe", {}, reason, {}, {}}, ExitStatus::problemFound);
}

// Several labels on a port mean a link width per label, which must be one for the whole box.
void settleLinkWidth(Draft& draft, const pcibus::Bus& bus, const std::string& anchorPath,
                     const std::vector<std::string>& portPaths) {
    const bool several = std::any_of(draft.ports.begin(), draft.ports.end(),
                                     [](const auto& port) { return port.labels.size() > 1; });
    if (!several)
        return;
    std::size_t perLabel = 0;
    for (std::size_t i = 0; i < draft.ports.size(); ++i) {
        const pcibus::PciFunction* const port = functionAtSlotPath(bus, portPaths[i]);
        const std::size_t width = port == nullptr ? 0 : port->linkWidth;
        const std::size_t here = width / draft.ports[i].labels.size();
        if (perLabel == 0)
            perLabel = here;
        if (here == 0 || here != perLabel || width / perLabel != draft.ports[i].labels.size())
            fail(fmt::format("port {} is {} wide and has {}; all ports must have the same number "
                             "of lanes for each label",
                             quoted(draft.ports[i].labels.front()), counted(width, "lane"),
                             counted(draft.ports[i].labels.size(), "label")));
    }
    draft.linkWidthPerLabel = static_cast<std::int32_t>(perLabel);
    const pcibus::PciFunction* const upstream = functionAtSlotPath(bus, anchorPath);
    const std::size_t width = upstream == nullptr ? 0 : upstream->linkWidth;
    draft.upstreamLabels.clear();
    for (std::size_t i = 1; i <= width / perLabel; ++i)
        draft.upstreamLabels.push_back(fmt::format("HOST{}", i));
}

} // namespace

void Watch::say(const std::string& text) {
    questions_ << wrapped(text, 0) << std::flush;
}

bool Watch::ask(const std::string& question, std::string& answer) {
    say(question);
    if (!std::getline(answers_, answer))
        return false;
    answer = std::string(trim(answer));
    return true;
}

std::string Watch::changedPort(const pcibus::Bus& before, const pcibus::Bus& after,
                               const std::string& anchorPath) {
    const Functions old = functionsBelow(before, anchorPath);
    const Functions now = functionsBelow(after, anchorPath);
    Functions steady;
    std::set<std::string> changed;
    for (const auto& [path, what] : now) {
        const auto was = old.find(path);
        if (was != old.end() && was->second == what)
            steady.emplace(path, what);
        else
            changed.insert(path);
    }
    for (const auto& [path, what] : old) {
        if (!now.contains(path))
            changed.insert(path);
    }
    std::set<std::string> ports;
    for (const std::string& path : changed)
        ports.insert(portAbove(path, steady, anchorPath));
    if (ports.size() == 1)
        return *ports.begin();
    say(ports.empty()
            ? "Nothing has changed below the box. Is it plugged in, and powered?"
            : fmt::format("Something has changed behind {} at once. One at a time, please.",
                          counted(ports.size(), "port")));
    return {};
}

std::shared_ptr<const pcibus::Bus> Watch::run(Draft& draft, const std::string& anchorPath) {
    draft.ports.clear();
    draft.internalBridges.clear();
    std::vector<std::string> portPaths;
    auto before = readBus_();
    std::string label;
    std::string answer;
    while (
        ask("What is printed beside the next connector? (An empty line ends the list.)", label) &&
        !label.empty()) {
        if (label.find(',') != std::string::npos) {
            say("A label must have no comma.");
            continue;
        }
        std::string path;
        while (path.empty()) {
            if (!ask(fmt::format("Plug something into connector {} (or unplug what is in it), then "
                                 "press Enter; s and Enter skips it.",
                                 quoted(label)),
                     answer) ||
                answer == "s")
                break;
            const auto after = readBus_();
            if (functionAtSlotPath(*after, anchorPath) == nullptr)
                fail(fmt::format("the box is no longer at {}", anchorPath));
            path = changedPort(*before, *after, anchorPath);
            before = after;
        }
        if (path.empty())
            continue;
        const pcibus::PciFunction* const port = functionAtSlotPath(*before, path);
        if (port == nullptr || !port->isBridge()) {
            say("What has changed stands beside the ports of the box and not behind one. Try "
                "again with something in the connector.");
            continue;
        }
        const auto known = std::find(portPaths.begin(), portPaths.end(), path);
        const auto index = static_cast<std::size_t>(known - portPaths.begin());
        if (known == portPaths.end()) {
            portPaths.push_back(path);
            draft.ports.push_back(draftBridge(*before, *functionAtSlotPath(*before, anchorPath),
                                              *port, std::to_string(portPaths.size())));
        }
        draft.ports[index].labels.push_back(label);
        say(fmt::format("Connector {} is the port {}: TraversalMapFromAnchor = {}.", quoted(label),
                        pcibus::addressText(*port), draft.ports[index].map));
    }
    if (draft.ports.empty())
        fail("no connector was found");
    settleLinkWidth(draft, *before, anchorPath, portPaths);
    return before;
}

} // namespace tavctl::describe
