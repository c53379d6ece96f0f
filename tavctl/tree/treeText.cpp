#include "tavctl/tree/treeText.h"

#include "tavctl/bus/busAddress.h"
#include "tavctl/words/printable.h"

#include <fmt/core.h>

#include <algorithm>
#include <optional>

namespace tavctl {

namespace {

using pcibus::PciFunction;

std::string hopText(std::uint8_t hop) {
    return fmt::format("{:02x}.{:x}", pcibus::deviceOfHop(hop), pcibus::functionOfHop(hop));
}

// What stands on one level: functions, and the places of missing ports among them.
struct Branch {
    std::uint8_t hop = 0;
    const PciFunction* function = nullptr; // null: a missing port
    MissingPort missing;
};

class TextTree {
public:
    TextTree(const BusTreeView& view, const PciNames& names, bool numeric, const TextStyle& style)
        : view_(view), names_(names), numeric_(numeric), style_(style) {}

    std::string draw() {
        std::vector<std::uint8_t> roots;
        for (const std::uint8_t root : view_.bus().rootBuses()) {
            if (!branches(view_.bus().functionsOn(root), {}).empty())
                roots.push_back(root);
        }
        for (std::size_t i = 0; i < roots.size(); ++i) {
            const bool several = roots.size() > 1;
            const bool last = i + 1 == roots.size();
            if (several)
                out_ += i == 0 ? "-+-" : last ? " \\-" : " +-";
            else
                out_ += '-';
            out_ += fmt::format("[0000:{:02x}]\n", roots[i]);
            prefix_ = several ? (last ? "    " : " |  ") : " ";
            drawLevel(branches(view_.bus().functionsOn(roots[i]), {}));
        }
        return std::move(out_);
    }

private:
    [[nodiscard]] std::vector<Branch> branches(std::span<const PciFunction> functions,
                                               const std::vector<MissingPort>& missing) const {
        std::vector<Branch> result;
        for (const PciFunction& function : functions) {
            if (view_.isShown(function.handle()))
                result.push_back({function.hop(), &function, {}});
        }
        for (const MissingPort& port : missing)
            result.push_back({port.hop, nullptr, port});
        std::stable_sort(result.begin(), result.end(),
                         [](const Branch& a, const Branch& b) { return a.hop < b.hop; });
        return result;
    }

    void drawLevel(const std::vector<Branch>& level) {
        for (std::size_t i = 0; i < level.size(); ++i) {
            const bool last = i + 1 == level.size();
            out_ += fmt::format("{}{}{}", prefix_, last ? "\\-" : "+-", hopText(level[i].hop));
            if (level[i].function == nullptr) {
                drawMissing(level[i].missing);
                continue;
            }
            const PciFunction& function = *level[i].function;
            drawFunction(function);
            const std::size_t length = prefix_.size();
            prefix_ += last ? "   " : "|  ";
            drawLevel(branches(view_.below(function), view_.missingBelow(function.handle())));
            prefix_.resize(length);
        }
    }

    void drawMissing(const MissingPort& missing) {
        const std::string text =
            fmt::format("{{{} port, missing}}", printable(nameOf(missing.device)));
        out_ += fmt::format("  {}\n", style_.warning(text));
    }

    void drawFunction(const PciFunction& function) {
        if (function.isBridge())
            out_ += busesOf(function);
        for (const TreeMark& mark : view_.marksOf(function.handle()))
            out_ += fmt::format(
                "  {}", style_.mark(fmt::format("{{{}}}", printable(markText(mark, function)))));
        const std::string name = numeric_ ? identifiersOf(function)
                                          : names_.function(function.vendorId, function.deviceId);
        out_ += fmt::format("  {}\n", printable(name));
    }

    // "8086:a110 1234:0001"
    static std::string identifiersOf(const PciFunction& function) {
        return fmt::format("{:04x}:{:04x} {:04x}:{:04x}", function.vendorId, function.deviceId,
                           function.subsystemVendorId, function.subsystemId);
    }

    // "-[01-08]"; "-[]" for a bridge without a bus of its own below.
    [[nodiscard]] std::string busesOf(const PciFunction& bridge) const {
        if (bridge.secondaryBus == 0 || view_.bus().parentOfBus(bridge.secondaryBus) != &bridge)
            return "-[]";
        const std::uint8_t last = view_.lastBusBelow(bridge);
        return last == bridge.secondaryBus
                   ? fmt::format("-[{:02x}]", last)
                   : fmt::format("-[{:02x}-{:02x}]", bridge.secondaryBus, last);
    }

    [[nodiscard]] std::string nameOf(std::size_t device) const {
        return markedName(view_.devices()[device].listed);
    }

    [[nodiscard]] std::string markText(const TreeMark& mark, const PciFunction& function) const {
        const PlacedDevice& device = view_.devices()[mark.device];
        const std::string name = nameOf(mark.device);
        switch (mark.role) {
        case TreeMark::Role::device:
            return fmt::format("{}: {}", name, device.listed.model);
        case TreeMark::Role::upstreamPort:
            return fmt::format("{} upstream port", name);
        case TreeMark::Role::anchor:
            return fmt::format("{} anchor", name);
        case TreeMark::Role::port:
            break;
        }
        return fmt::format("{} {}", name, portText(device.ports[mark.port], function));
    }

    [[nodiscard]] std::string portText(const PlacedPort& port, const PciFunction& bridge) const {
        if (port.labels.empty())
            return "port without a label";
        std::string text = port.labels.size() == 1 ? "port" : "ports";
        for (const std::string& label : port.labels)
            text += fmt::format(" \"{}\"", label);
        return view_.below(bridge).empty() ? text.append(", empty") : text;
    }

    const BusTreeView& view_;
    const PciNames& names_;
    bool numeric_;
    const TextStyle& style_;
    std::string prefix_;
    std::string out_;
};

} // namespace

std::string treeAsText(const BusTreeView& view, const PciNames& names, bool numeric,
                       const TextStyle& style) {
    return TextTree(view, names, numeric, style).draw();
}

} // namespace tavctl
