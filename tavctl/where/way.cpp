#include "tavctl/where/way.h"

#include "tavctl/bus/busAddress.h"
#include "tavctl/words/document.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>

namespace tavctl {

namespace {

using pcibus::PciFunction;

// Kinds of what people look for; programs are told all.
bool isLookedFor(const SystemName& name) {
    constexpr std::array kKinds{"net",  "block", "tty",     "nvme",        "drm", "sound",
                                "rtc",  "input", "usbmisc", "video4linux", "ptp", "infiniband",
                                "gpib", "misc",  "uio",     "comedi"};
    return !name.isPart && std::find(kKinds.begin(), kKinds.end(), name.kind) != kKinds.end();
}

std::string functionName(const PciNames& names, const PciFunction& function) {
    std::string name = names.device(function.vendorId, function.deviceId);
    return name.empty() ? names.function(function.vendorId, function.deviceId) : name;
}

std::string markText(const MarkedBus& marked, const TreeMark& mark) {
    const ListedDevice& device = marked.devices[mark.device].listed;
    switch (mark.role) {
    case TreeMark::Role::device:
        return fmt::format("{}: {}", markedName(device), device.model);
    case TreeMark::Role::upstreamPort:
        return fmt::format("the upstream port of {}", markedName(device));
    case TreeMark::Role::anchor:
        return fmt::format("the anchor of {}", markedName(device));
    case TreeMark::Role::port:
        break;
    }
    return "the port of " + connectorText(marked, {mark.device, mark.port});
}

} // namespace

Ways::Ways(const MarkedBus& marked, const SystemNames& systemNames)
    : marked_(marked), systemNames_(systemNames), view_(marked.whole.main(), marked.devices) {}

Found Ways::to(const FunctionPlace& place) const {
    Found found;
    found.place = place;
    const PciFunction& function = *place.function;
    found.systemNames = systemNames_.of({place.domain->number(), function.handle()});
    if (place.domain != &marked_.whole.main())
        return found;
    found.marks = view_.marksOf(function.handle());
    for (const PciFunction* at = view_.bus().parentOfBus(function.bus); at != nullptr;
         at = view_.bus().parentOfBus(at->bus)) {
        for (const TreeMark& mark : view_.marksOf(at->handle())) {
            if (mark.role == TreeMark::Role::port)
                found.way.insert(found.way.begin(), {mark.device, mark.port});
        }
    }
    return found;
}

std::vector<Found> Ways::behind(const WayStep& connector) const {
    std::vector<Found> found;
    const auto& bridge = marked_.devices[connector.device].ports[connector.port].bridge;
    if (!bridge)
        return found;
    std::vector<const PciFunction*> waiting; // the next one last
    const auto addBelow = [&](const PciFunction& function) {
        const auto below = view_.below(function);
        for (std::size_t i = below.size(); i-- > 0;)
            waiting.push_back(&below[i]);
    };
    addBelow(*view_.bus().find(*bridge));
    while (!waiting.empty()) {
        const PciFunction& function = *waiting.back();
        waiting.pop_back();
        const auto& marks = view_.marksOf(function.handle());
        const bool isDevice = std::any_of(marks.begin(), marks.end(), [](const TreeMark& mark) {
            return mark.role == TreeMark::Role::device;
        });
        if (!view_.bus().isBridge(function) || isDevice)
            found.push_back(to({&marked_.whole.main(), &function}));
        addBelow(function);
    }
    return found;
}

std::string connectorText(const MarkedBus& marked, const WayStep& step) {
    const PlacedDevice& device = marked.devices[step.device];
    const auto& labels = device.ports[step.port].labels;
    if (labels.empty())
        return fmt::format("{} port without a label", markedName(device.listed));
    return connectorName(markedName(device.listed), labels);
}

std::string wayAsText(const MarkedBus& marked, const PciNames& names, const Found& found) {
    std::string text;
    for (const WayStep& step : found.way)
        text += connectorText(marked, step) + " > ";
    const PciFunction& function = *found.place.function;
    text += fmt::format("{} {}", shortAddress(found.place.domain->number(), function),
                        functionName(names, function));
    std::vector<std::string> others;
    for (const TreeMark& mark : found.marks)
        others.push_back(markText(marked, mark));
    for (const SystemName& name : found.systemNames) {
        if (isLookedFor(name) && std::find(others.begin(), others.end(), name.name) == others.end())
            others.push_back(name.name);
    }
    return others.empty() ? text : fmt::format("{} ({})", text, separated(others, ", "));
}

Json wayAsJson(const MarkedBus& marked, const PciNames& names, const Found& found) {
    const PciFunction& function = *found.place.function;
    Json way = Json::array();
    for (const WayStep& step : found.way) {
        const PlacedDevice& device = marked.devices[step.device];
        const PlacedPort& port = device.ports[step.port];
        way.push_back(
            Json{{"name", device.listed.terminalName},
                 {"model", device.listed.model},
                 {"labels", port.labels},
                 {"portAddress", fullAddress(DomainAddress{0, port.bridge.value_or(0)})}});
    }
    Json marks = Json::array();
    for (const TreeMark& mark : found.marks) {
        const PlacedDevice& device = marked.devices[mark.device];
        Json entry{{"role", roleName(mark.role)}, {"name", device.listed.terminalName}};
        if (mark.role == TreeMark::Role::port)
            entry.add("labels", device.ports[mark.port].labels);
        marks.push_back(std::move(entry));
    }
    Json system = Json::array();
    for (const SystemName& name : found.systemNames)
        system.push_back(Json{{"class", name.kind}, {"name", name.name}});
    return Json{{"address", fullAddress(found.place.domain->number(), function)},
                {"vendorName", textOrNull(names.vendor(function.vendorId))},
                {"deviceName", textOrNull(names.device(function.vendorId, function.deviceId))},
                {"way", std::move(way)},
                {"marks", std::move(marks)},
                {"systemNames", std::move(system)}};
}

} // namespace tavctl
