#include "tavctl/describe/draft.h"

#include "pcibus/position.h"
#include "tavctl/describe/lanes.h"
#include "tavctl/explain/changes.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <utility>

namespace tavctl::describe {

namespace {

using nZoTavManagerPciPlugin_15_0::tBridgeDescription;
using nZoTavManagerPciPlugin_15_0::tModelDescription;
using nZoTavManagerPciPlugin_15_0::tPciIds;

std::string idText(const tPciIds& ids) {
    return fmt::format("{:04X}:{:04X}", ids.vendor, ids.device);
}

// The numbers of labels that a port takes by its width.
std::size_t labelCount(const pcibus::PciFunction& bridge, std::int32_t perLabel) {
    return perLabel == 0 ? 1 : bridge.linkWidth / static_cast<std::size_t>(perLabel);
}

// "HOST", or "HOST1,HOST2" for several.
std::vector<std::string> numbered(const std::string& name, std::size_t count) {
    if (count == 1)
        return {name};
    std::vector<std::string> labels;
    for (std::size_t i = 1; i <= count; ++i)
        labels.push_back(fmt::format("{}{}", name, i));
    return labels;
}

std::string remarkOf(const pcibus::Bus& bus, const pcibus::PciFunction& bridge) {
    std::string remark = fmt::format("Now {}", pcibus::addressText(bridge));
    if (bridge.linkWidth != 0)
        remark += fmt::format(", at most {} lanes wide", bridge.linkWidth);
    if (bus.parentOfBus(bridge.secondaryBus) != &bridge)
        return fmt::format("{}.", remark);
    const auto below = bus.functionsOn(bridge.secondaryBus);
    if (below.empty())
        return remark + "; nothing is behind it.";
    const pcibus::PciFunction& first = below.front();
    remark += fmt::format("; behind it {} ({})", pcibus::addressText(first), idText(first.ids()));
    return remark + (below.size() == 1 ? "." : " and more.");
}

class Collector {
public:
    Collector(const pcibus::Bus& bus, const pcibus::PciFunction& anchor,
              const DraftRequest& request, Draft& draft)
        : bus_(bus), anchor_(anchor), request_(request), draft_(draft) {}

    void collect() {
        std::vector<std::uint32_t> waiting; // the next one last
        const auto addBelow = [&](const pcibus::PciFunction& bridge) {
            const auto children = bus_.childrenOf(bridge);
            waiting.insert(waiting.end(), children.rbegin(), children.rend());
        };
        addBelow(anchor_);
        while (!waiting.empty()) {
            const pcibus::PciFunction& child = *bus_.findBridge(waiting.back());
            waiting.pop_back();
            if (request_.whole && !bus_.childrenOf(child).empty()) {
                draft_.internalBridges.push_back(draftBridge(
                    bus_, anchor_, child, std::to_string(draft_.internalBridges.size() + 1)));
                addBelow(child);
            } else {
                addPort(child);
            }
        }
    }

private:
    void addPort(const pcibus::PciFunction& bridge) {
        requireLanes(bridge, "downstream port", request_.linkWidthPerLabel);
        const std::string name = std::to_string(draft_.ports.size() + 1);
        DraftBridge port = draftBridge(bus_, anchor_, bridge, name);
        const std::size_t count = labelCount(bridge, request_.linkWidthPerLabel);
        port.labels = count == 1 ? std::vector{name} : numbered(name + ".", count);
        draft_.ports.push_back(std::move(port));
    }

    const pcibus::Bus& bus_;
    const pcibus::PciFunction& anchor_;
    const DraftRequest& request_;
    Draft& draft_;
};

std::string commented(const std::string& text) {
    std::string out;
    std::string lines = wrapped(text, 0, 96);
    for (std::size_t start = 0; start < lines.size();) {
        const std::size_t end = lines.find('\n', start);
        out += fmt::format("; {}\n", lines.substr(start, end - start));
        start = end + 1;
    }
    return out;
}

std::string listOf(const std::vector<std::string>& items) {
    return items.empty() ? "\"\"" : separated(items, ",");
}

std::vector<std::string> namesOf(const std::vector<DraftBridge>& bridges) {
    std::vector<std::string> names;
    names.reserve(bridges.size());
    for (const DraftBridge& each : bridges)
        names.push_back(each.name);
    return names;
}

std::vector<std::string> labelsOf(const Draft& draft) {
    std::vector<std::string> labels = draft.upstreamLabels;
    for (const DraftBridge& port : draft.ports)
        labels.insert(labels.end(), port.labels.begin(), port.labels.end());
    return labels;
}

std::string idLines(const tPciIds& ids) {
    return fmt::format("Vid = {:04X}\nPid = {:04X}\nSsVid = {:04X}\nSsPid = {:04X}\n", ids.vendor,
                       ids.device, ids.subsystemVendor, ids.subsystem);
}

class Writer {
public:
    explicit Writer(const Draft& draft) : draft_(draft) {
        sections_[idsKey(draft.anchor)] = "Anchor";
    }

    std::string write() {
        head();
        model();
        anchor();
        upstreamPort();
        for (const DraftBridge& bridge : draft_.internalBridges)
            section("InternalBridge", bridge);
        for (const DraftBridge& port : draft_.ports)
            section("DownstreamPort", port);
        return std::move(text_);
    }

private:
    static std::string idsKey(const tPciIds& ids) { return explain::idsText(ids); }

    void head() {
        text_ += commented(fmt::format(
            "{}. A draft that tavctl describe made from {}. {}; what only you "
            "can know is marked with EDIT.",
            draft_.model, draft_.origin,
            draft_.unfinished.empty() ? "It is complete and works as it is"
                                      : "It is not finished, and the box is not listed by it"));
        if (!draft_.unfinished.empty())
            text_ += fmt::format(
                ";\n{}", commented("EDIT: this has to be settled: " + draft_.unfinished + "."));
        for (const std::string& note : draft_.notes)
            text_ += fmt::format(";\n{}", commented(note));
    }

    void model() {
        text_ += fmt::format(
            "\n[UpstreamTAV]\n"
            "; EDIT: the name that is reported to the host.\n"
            "Model = {}\n"
            "; EDIT: PCI, Expresscard or SwitchboxTav.\n"
            "DeviceCategory = {}\n"
            "; Bridges of the box that are neither the upstream port nor a connector's.\n"
            "InternalBridges = {}\n",
            draft_.model, draft_.category, listOf(namesOf(draft_.internalBridges)));
        if (draft_.linkWidthPerLabel != 0)
            text_ += fmt::format("; Lanes that one connector carries. A port takes as many labels "
                                 "as its width divided by it.\n"
                                 "LinkWidthPerLabel = {}\n",
                                 draft_.linkWidthPerLabel);
        text_ += fmt::format(
            "; EDIT: what is printed beside the connectors: first the upstream port's, then the "
            "others in\n"
            "; the order of DownstreamPorts, {}.\n"
            "ConnectorLabels = {}\n"
            "; The sections DownstreamPort... below.\n"
            "DownstreamPorts = {}\n"
            "HasUpstreamPort = 1\n"
            "; EDIT: the word that names such as TAV1 begin with; no digits, no \"%\".\n"
            "TerminalNameBase = {}\n",
            draft_.linkWidthPerLabel == 0 ? "one for each port" : "without blanks",
            listOf(labelsOf(draft_)), listOf(namesOf(draft_.ports)), draft_.terminalNameBase);
    }

    void anchor() {
        text_ += fmt::format("\n; The bridge by which the box is recognised: every bridge with "
                             "these four identifiers is tried.\n"
                             "[Anchor]\nPciHeaderType = 1\n{}",
                             idLines(draft_.anchor));
    }

    void upstreamPort() {
        text_ += "\n; The upstream port is the anchor itself, so the way to it is empty. An anchor "
                 "that is a bridge\n; must be described once among the bridges.\n";
        text_ += "[UpstreamPort]\nIDsSameAs = Anchor\nTraversalMapFromAnchor = \"\"\n";
    }

    void section(std::string_view prefix, const DraftBridge& bridge) {
        const std::string name = fmt::format("{}{}", prefix, bridge.name);
        text_ += '\n';
        if (!bridge.remark.empty())
            text_ += commented(bridge.remark);
        if (!draft_.unfinished.empty() && !bridge.labels.empty())
            text_ += commented(
                fmt::format("EDIT: printed beside its connectors: {}.", enumerated(bridge.labels)));
        text_ += fmt::format("[{}]\n", name);
        const auto [first, isNew] = sections_.emplace(idsKey(bridge.ids), name);
        text_ += isNew ? idLines(bridge.ids) : fmt::format("IDsSameAs = {}\n", first->second);
        text_ += fmt::format("TraversalMapFromAnchor = {}\n", bridge.map);
        if (bridge.isOptional)
            text_ +=
                "; Not counted when boxes are searched for: others have as many such bridges.\n"
                "IsOptional = 1\n";
    }

    const Draft& draft_;
    std::string text_;
    std::map<std::string, std::string> sections_; // identifiers and the section that gives them
};

} // namespace

DraftBridge draftBridge(const pcibus::Bus& bus, const pcibus::PciFunction& anchor,
                        const pcibus::PciFunction& bridge, std::string name) {
    DraftBridge result;
    result.name = std::move(name);
    result.map =
        explain::mapBetween(pcibus::positionOf(bus, anchor), pcibus::positionOf(bus, bridge));
    result.ids = bridge.ids();
    result.remark = remarkOf(bus, bridge);
    return result;
}

Draft draftOf(const pcibus::Bus& bus, const pcibus::PciFunction& bridge,
              const DraftRequest& request) {
    requireLanes(bridge, "upstream port", request.linkWidthPerLabel);
    Draft draft;
    draft.anchor = bridge.ids();
    draft.model =
        request.model.empty() ? fmt::format("New box {}", idText(draft.anchor)) : request.model;
    draft.category = request.category;
    draft.origin = fmt::format("the bridge {}", pcibus::addressText(bridge));
    draft.linkWidthPerLabel = request.linkWidthPerLabel;
    draft.upstreamLabels = numbered("HOST", labelCount(bridge, request.linkWidthPerLabel));
    if (!request.watch)
        Collector(bus, bridge, request, draft).collect();
    return draft;
}

tModelDescription modelOf(const Draft& draft) {
    const auto described = [](const DraftBridge& bridge) {
        tBridgeDescription result;
        result.traversalMap = bridge.map;
        result.ids = bridge.ids;
        result.isOptional = bridge.isOptional;
        return result;
    };
    tModelDescription model;
    model.model = draft.model;
    model.anchors = {{nZoTavManagerPciPlugin_15_0::kHeaderTypeBridge, draft.anchor}};
    const auto labels = labelsOf(draft);
    model.connectorLabels = {labels.begin(), labels.end()};
    model.linkWidthPerLabel = draft.linkWidthPerLabel;
    model.upstreamPort.traversalMap.clear();
    model.upstreamPort.ids = draft.anchor;
    for (const DraftBridge& bridge : draft.internalBridges)
        model.internalBridges.push_back(described(bridge));
    for (const DraftBridge& port : draft.ports)
        model.downstreamPorts.push_back(described(port));
    model.terminalNameBase = draft.terminalNameBase;
    return model;
}

std::string textOf(const Draft& draft) {
    return Writer(draft).write();
}

} // namespace tavctl::describe
