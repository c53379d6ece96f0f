#include "tavctl/bus/busAddress.h"
#include "tavctl/bus/leftOutWords.h"
#include "tavctl/tree/treeText.h"
#include "tavctl/words/json.h"

#include <fmt/core.h>

namespace tavctl {

namespace {

using pcibus::PciFunction;

std::string identifier(std::uint16_t id) {
    return fmt::format("{:04x}", id);
}

Json orNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

class JsonTree {
public:
    JsonTree(const BusTreeView& view, const PciNames& names) : view_(view), names_(names) {}

    Json roots() {
        Json result = Json::array();
        for (const std::uint8_t root : view_.bus().rootBuses()) {
            Json functions = level(view_.bus().functionsOn(root));
            if (!functions.empty())
                result.push_back(Json{{"bus", root}, {"functions", std::move(functions)}});
        }
        return result;
    }

private:
    Json level(std::span<const PciFunction> functions) {
        Json result = Json::array();
        for (const PciFunction& function : functions) {
            if (view_.isShown(function.handle()))
                result.push_back(describe(function));
        }
        return result;
    }

    Json describe(const PciFunction& function) {
        Json result{{"address", pcibus::addressText(function)},
                    {"vendorId", identifier(function.vendorId)},
                    {"deviceId", identifier(function.deviceId)},
                    {"subsystemVendorId", identifier(function.subsystemVendorId)},
                    {"subsystemId", identifier(function.subsystemId)},
                    {"vendor", orNull(names_.vendor(function.vendorId))},
                    {"device", orNull(names_.device(function.vendorId, function.deviceId))},
                    {"marks", marks(function)}};
        if (!function.isBridge())
            return result;
        result.add("secondaryBus", function.secondaryBus);
        result.add("functions", level(view_.below(function)));
        Json missing = Json::array();
        for (const MissingPort& port : view_.missingBelow(function.handle()))
            missing.push_back(Json{{"terminalName", nameOf(port.device)},
                                   {"device", pcibus::deviceOfHop(port.hop)},
                                   {"function", pcibus::functionOfHop(port.hop)}});
        if (!missing.empty())
            result.add("missingPorts", std::move(missing));
        return result;
    }

    Json marks(const PciFunction& function) {
        Json result = Json::array();
        for (const TreeMark& mark : view_.marksOf(function.handle())) {
            const PlacedDevice& device = view_.devices()[mark.device];
            Json entry{{"role", roleName(mark.role)}, {"terminalName", nameOf(mark.device)}};
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

    static const char* roleName(TreeMark::Role role) {
        switch (role) {
        case TreeMark::Role::device:
            return "device";
        case TreeMark::Role::upstreamPort:
            return "upstreamPort";
        case TreeMark::Role::anchor:
            return "anchor";
        case TreeMark::Role::port:
            return "port";
        }
        return "";
    }

    [[nodiscard]] const std::string& nameOf(std::size_t device) const {
        return view_.devices()[device].listed.terminalName;
    }

    const BusTreeView& view_;
    const PciNames& names_;
};

} // namespace

std::string treeAsJson(const BusTreeView& view, const PciNames& names,
                       const std::optional<pcibus::LeftOut>& leftOut) {
    const Json whole{{"roots", JsonTree(view, names).roots()}, {"leftOut", leftOutJson(leftOut)}};
    return whole.line();
}

} // namespace tavctl
