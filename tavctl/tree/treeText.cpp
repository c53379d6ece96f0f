#include "tavctl/tree/treeText.h"

#include "tavctl/tree/treeLine.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>
#include <vector>

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

// One domain. Roots are joined where there is more than one, of whatever domain.
class DomainTree {
public:
    DomainTree(const BusTreeView& view, const PciNames& names, const TreeForm& form,
               const TextStyle& style, std::string& out)
        : view_(view), names_(names), form_(form), style_(style), out_(out) {}

    [[nodiscard]] std::vector<std::uint8_t> roots() const {
        std::vector<std::uint8_t> roots;
        for (const std::uint8_t root : view_.bus().rootBuses()) {
            if (!branches(view_.bus().functionsOn(root), {}).empty())
                roots.push_back(root);
        }
        return roots;
    }

    void draw(std::uint8_t root, const char* front, const char* prefix) {
        TreeLine line(fmt::format("{}[{:04x}:{:02x}]", front, view_.domain().number(), root));
        if (view_.domain().number() != 0)
            line.add(TreeLine::Dress::warning, "(the plug-in does not search this domain)");
        end(line);
        prefix_ = prefix;
        drawLevels(branches(view_.bus().functionsOn(root), {}));
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

    // A level that is begun, and the ones above it. They are as many as the bus is deep, which is
    // too much for the stack of a thread.
    struct Level {
        std::vector<Branch> branches;
        std::size_t next = 0;
        std::size_t prefixLength = 0;
    };

    void drawLevels(std::vector<Branch> uppermost) {
        std::vector<Level> begun;
        begun.push_back({std::move(uppermost), 0, prefix_.size()});
        while (!begun.empty()) {
            Level& level = begun.back();
            prefix_.resize(level.prefixLength);
            if (level.next == level.branches.size()) {
                begun.pop_back();
                continue;
            }
            const Branch& branch = level.branches[level.next++];
            const bool last = level.next == level.branches.size();
            std::string front =
                fmt::format("{}{}{}", prefix_, last ? "\\-" : "+-", hopText(branch.hop));
            if (branch.function == nullptr) {
                drawMissing(branch.missing, std::move(front));
                continue;
            }
            const PciFunction& function = *branch.function;
            drawFunction(function, std::move(front));
            prefix_ += last ? "   " : "|  ";
            begun.push_back({branches(view_.below(function), view_.missingBelow(function.handle())),
                             0, prefix_.size()});
        }
    }

    void drawMissing(const MissingPort& missing, std::string front) {
        TreeLine line(std::move(front));
        line.add(TreeLine::Dress::warning,
                 fmt::format("{{{} port, missing}}", nameOf(missing.device)));
        end(line);
    }

    void drawFunction(const PciFunction& function, std::string front) {
        if (view_.bus().isBridge(function))
            front += busesOf(function);
        TreeLine line(std::move(front));
        for (const TreeMark& mark : view_.marksOf(function.handle()))
            addMark(line, mark, function);
        if (const LinkState link = linkBelow(view_.domain(), function); link.isKnown())
            line.add(link.isDegraded() ? TreeLine::Dress::warning : TreeLine::Dress::plain,
                     linkText(link));
        if (form_.numeric)
            line.add(TreeLine::Dress::plain, identifiersOf(function));
        else
            line.add(TreeLine::Dress::plain, {},
                     names_.function(function.vendorId, function.deviceId));
        end(line);
    }

    // "8086:a110 1234:0001"
    static std::string identifiersOf(const PciFunction& function) {
        return fmt::format("{:04x}:{:04x} {:04x}:{:04x}", function.vendorId, function.deviceId,
                           function.subsystemVendorId, function.subsystemId);
    }

    // "-[01-08]"; "-[]" for a bridge without a bus of its own below.
    [[nodiscard]] std::string busesOf(const PciFunction& bridge) const {
        if (!view_.leadsToBus(bridge))
            return "-[]";
        const std::uint8_t last = view_.lastBusOf(bridge);
        return last == bridge.secondaryBus
                   ? fmt::format("-[{:02x}]", last)
                   : fmt::format("-[{:02x}-{:02x}]", bridge.secondaryBus, last);
    }

    [[nodiscard]] std::string nameOf(std::size_t device) const {
        return markedName(view_.devices()[device].listed);
    }

    void addMark(TreeLine& line, const TreeMark& mark, const PciFunction& function) const {
        const PlacedDevice& device = view_.devices()[mark.device];
        const std::string name = nameOf(mark.device);
        switch (mark.role) {
        case TreeMark::Role::device:
            line.add(TreeLine::Dress::mark, fmt::format("{{{}: ", name), device.listed.model, "}");
            break;
        case TreeMark::Role::upstreamPort:
            line.add(TreeLine::Dress::mark, fmt::format("{{{} upstream port}}", name));
            break;
        case TreeMark::Role::anchor:
            line.add(TreeLine::Dress::mark, fmt::format("{{{} anchor}}", name));
            break;
        case TreeMark::Role::port:
            line.add(TreeLine::Dress::mark,
                     fmt::format("{{{} {}}}", name, portText(device.ports[mark.port], function)));
            break;
        }
    }

    [[nodiscard]] std::string portText(const PlacedPort& port, const PciFunction& bridge) const {
        if (port.labels.empty())
            return "port without a label";
        std::string text = port.labels.size() == 1 ? "port" : "ports";
        for (const std::string& label : port.labels)
            text += fmt::format(" \"{}\"", label);
        return view_.below(bridge).empty() ? text.append(", empty") : text;
    }

    void end(const TreeLine& line) { out_ += line.text(form_.width, style_) + "\n"; }

    const BusTreeView& view_;
    const PciNames& names_;
    const TreeForm& form_;
    const TextStyle& style_;
    std::string& out_;
    std::string prefix_;
};

} // namespace

std::string treeAsText(std::span<const BusTreeView> domains, const PciNames& names,
                       const TreeForm& form, const TextStyle& style) {
    std::string out;
    std::vector<std::pair<DomainTree, std::uint8_t>> roots;
    for (const BusTreeView& view : domains) {
        const DomainTree tree(view, names, form, style, out);
        for (const std::uint8_t root : tree.roots())
            roots.emplace_back(tree, root);
    }
    const bool several = roots.size() > 1;
    for (auto& [tree, root] : roots) {
        const bool first = &tree == &roots.front().first;
        const bool last = &tree == &roots.back().first;
        if (!several)
            tree.draw(root, "-", " ");
        else
            tree.draw(root, first ? "-+-" : last ? " \\-" : " +-", last ? "    " : " |  ");
    }
    return out;
}

} // namespace tavctl
