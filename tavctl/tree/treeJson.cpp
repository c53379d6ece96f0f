#include "tavctl/bus/busAddress.h"
#include "tavctl/bus/leftOutWords.h"
#include "tavctl/bus/linkJson.h"
#include "tavctl/tree/treeText.h"
#include "tavctl/words/document.h"
#include "tavctl/words/json.h"

#include <fmt/core.h>

namespace tavctl {

namespace {

using pcibus::PciFunction;

std::string identifier(std::uint16_t id) {
    return fmt::format("{:04x}", id);
}

class JsonTree {
public:
    JsonTree(const BusTreeView& view, const PciNames& names) : view_(view), names_(names) {}

    Json domain() {
        return Json{{"domain", view_.domain().number()},
                    {"searched", view_.domain().number() == 0},
                    {"rootBuses", rootBuses()}};
    }

private:
    Json rootBuses() {
        Json result = Json::array();
        for (const std::uint8_t root : view_.bus().rootBuses()) {
            Json functions = functionsBelow(view_.bus().functionsOn(root));
            if (!functions.empty())
                result.push_back(Json{{"bus", root}, {"functions", std::move(functions)}});
        }
        return result;
    }

    // A bridge that is begun, and what stands below it. They are as many as the bus is deep, which
    // is too much for the stack of a thread.
    struct Level {
        const PciFunction* bridge; // null: a root bus
        Json object;
        std::span<const PciFunction> functions;
        std::size_t next = 0;
        Json list = Json::array();
    };

    Json functionsBelow(std::span<const PciFunction> uppermost) {
        std::vector<Level> begun;
        begun.push_back({nullptr, nullptr, uppermost});
        while (true) {
            Level& level = begun.back();
            if (level.next < level.functions.size()) {
                const PciFunction& function = level.functions[level.next++];
                if (!view_.isShown(function.handle()))
                    continue;
                Json object = describe(function);
                if (view_.bus().isBridge(function))
                    begun.push_back({&function, std::move(object), view_.below(function)});
                else
                    level.list.push_back(std::move(object));
                continue;
            }
            Level done = std::move(level);
            begun.pop_back();
            if (begun.empty())
                return std::move(done.list);
            addBelow(*done.bridge, done.object, std::move(done.list));
            begun.back().list.push_back(std::move(done.object));
        }
    }

    Json describe(const PciFunction& function) {
        Json result{{"address", fullAddress(view_.domain().number(), function)},
                    {"vendorId", identifier(function.vendorId)},
                    {"deviceId", identifier(function.deviceId)},
                    {"subsystemVendorId", identifier(function.subsystemVendorId)},
                    {"subsystemId", identifier(function.subsystemId)},
                    {"vendorName", textOrNull(names_.vendor(function.vendorId))},
                    {"deviceName", textOrNull(names_.device(function.vendorId, function.deviceId))},
                    {"marks", marks(function)},
                    {"bridge", bridgeKind(function)}};
        if (view_.bus().isBridge(function))
            addBuses(function, result);
        return result;
    }

    static Json bridgeKind(const PciFunction& function) {
        return function.isBridge()          ? Json("pci")
               : function.isCardBusBridge() ? Json("cardBus")
                                            : Json(nullptr);
    }

    void addBuses(const PciFunction& bridge, Json& result) const {
        const bool leads = view_.leadsToBus(bridge);
        result.add("secondaryBus", leads ? Json(bridge.secondaryBus) : Json(nullptr));
        result.add("subordinateBus", leads ? Json(view_.lastBusOf(bridge)) : Json(nullptr));
        addLink(result, linkBelow(view_.domain(), bridge));
    }

    void addBelow(const PciFunction& bridge, Json& result, Json functions) const {
        result.add("functions", std::move(functions));
        Json missing = Json::array();
        for (const MissingPort& port : view_.missingBelow(bridge.handle()))
            missing.push_back(Json{{"name", nameOf(port.device)},
                                   {"deviceNumber", pcibus::deviceOfHop(port.hop)},
                                   {"functionNumber", pcibus::functionOfHop(port.hop)}});
        result.add("missingPorts", std::move(missing));
    }

    Json marks(const PciFunction& function) {
        Json result = Json::array();
        for (const TreeMark& mark : view_.marksOf(function.handle())) {
            const PlacedDevice& device = view_.devices()[mark.device];
            Json entry{{"role", roleName(mark.role)}, {"name", nameOf(mark.device)}};
            if (mark.role == TreeMark::Role::device) {
                entry.add("model", device.listed.model);
                entry.add("stored", device.listed.isStored);
            }
            if (mark.role == TreeMark::Role::port) {
                entry.add("labels", device.ports[mark.port].labels);
                entry.add("empty", view_.below(function).empty());
            }
            result.push_back(std::move(entry));
        }
        return result;
    }

    [[nodiscard]] const std::string& nameOf(std::size_t device) const {
        return view_.devices()[device].listed.terminalName;
    }

    const BusTreeView& view_;
    const PciNames& names_;
};

} // namespace

std::string treeAsJson(std::span<const BusTreeView> domains, const PciNames& names,
                       const std::optional<pcibus::LeftOut>& leftOut) {
    Json list = Json::array();
    for (const BusTreeView& view : domains)
        list.push_back(JsonTree(view, names).domain());
    Json whole = newDocument();
    whole.add("leftOut", leftOutJson(leftOut));
    whole.add("domains", std::move(list));
    return whole.line();
}

} // namespace tavctl
