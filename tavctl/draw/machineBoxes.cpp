#include "tavctl/draw/machineBoxes.h"

#include <algorithm>
#include <set>

namespace tavctl {

namespace {

using pcibus::PciFunction;

// More would make a tile much higher than it is wide.
constexpr std::size_t kMostJoined = 4;

class Boxes {
public:
    Boxes(const BusTreeView& view, const Placement& placement) : view_(view) {
        for (std::size_t i = 0; i < placement.devices.size(); ++i) {
            boxes_.devices.emplace_back();
            boxes_.devices[i].isDrawn = placement.devices[i].has_value();
        }
        begun_.resize(boxes_.devices.size());
        for (const std::uint8_t root : view_.bus().rootBuses())
            addBox(root, nullptr, view_.bus().functionsOn(root));
        // Devices that stand in each other have no place of their own.
        for (std::size_t i = 0; i < boxes_.devices.size(); ++i) {
            if (boxes_.devices[i].isDrawn && !begun_[i]) {
                boxes_.devices[i].isApart = true;
                beginDevice(i);
            }
        }
    }

    MachineBoxes take() { return std::move(boxes_); }

private:
    using Functions = std::vector<const PciFunction*>;

    [[nodiscard]] Functions shown(std::span<const PciFunction> functions) const {
        Functions result;
        for (const PciFunction& function : functions) {
            if (view_.isShown(function.handle()))
                result.push_back(&function);
        }
        return result;
    }
    [[nodiscard]] Functions shownBelow(const PciFunction& bridge) const {
        return shown(view_.below(bridge));
    }

    // The first drawn device that has it.
    [[nodiscard]] std::optional<std::size_t> ownerOf(const PciFunction& function) const {
        for (const TreeMark& mark : view_.marksOf(function.handle())) {
            if (boxes_.devices[mark.device].isDrawn)
                return mark.device;
        }
        return std::nullopt;
    }

    [[nodiscard]] bool isPartOf(const PciFunction& function, std::size_t device) const {
        const auto& marks = view_.marksOf(function.handle());
        return std::any_of(marks.begin(), marks.end(),
                           [&](const TreeMark& mark) { return mark.device == device; });
    }

    [[nodiscard]] bool hasPartBelow(const PciFunction& bridge, std::size_t device) const {
        const auto below = view_.below(bridge);
        return std::any_of(below.begin(), below.end(), [&](const PciFunction& function) {
            return isPartOf(function, device) || hasPartBelow(function, device);
        });
    }

    // Nothing where nothing is shown.
    std::optional<std::size_t> addBox(std::uint8_t bus, const PciFunction* bridge,
                                      std::span<const PciFunction> functions) {
        const Functions all = shown(functions);
        if (all.empty())
            return std::nullopt;
        const std::size_t box = boxes_.bridges.size();
        boxes_.bridges.push_back({bus, bridge, {}, bridge == nullptr, false});
        std::vector<FunctionRow> rows;
        for (const PciFunction* const function : all)
            rows.push_back(rowOf(*function));
        boxes_.bridges[box].isList = separate(rows);
        boxes_.bridges[box].rows = std::move(rows);
        return box;
    }

    FunctionRow rowOf(const PciFunction& function) {
        FunctionRow row{&function, ownerOf(function), false, std::nullopt};
        if (!row.device)
            row.bridgeBox = addBox(function.secondaryBus, &function, view_.below(function));
        else if (!begun_[*row.device])
            row.leadsToDevice = beginDevice(*row.device);
        return row;
    }

    // Whether it was done: no line leads from these rows then.
    bool separate(const std::vector<FunctionRow>& rows) {
        const auto leads = [](const FunctionRow& row) {
            return row.leadsToDevice || row.bridgeBox;
        };
        const auto count = std::count_if(rows.begin(), rows.end(), leads);
        if (static_cast<std::size_t>(count) <= kMostJoined)
            return false;
        for (const FunctionRow& row : rows) {
            if (row.bridgeBox)
                boxes_.bridges[*row.bridgeBox].isApart = true;
            if (row.leadsToDevice)
                boxes_.devices[*row.device].isApart = true;
        }
        return true;
    }

    bool beginDevice(std::size_t device) {
        begun_[device] = true;
        const PlacedDevice& placed = view_.devices()[device];
        std::vector<FunctionRow> inside;
        std::set<std::uint32_t> seen;
        for (const std::uint32_t handle : functionsOf(placed)) {
            const PciFunction* const function = view_.bus().find(handle);
            if (function != nullptr && !isPortOf(*function, device))
                addInside(shownBelow(*function), device, seen, inside);
        }
        std::vector<std::optional<std::size_t>> boxes;
        std::vector<std::vector<std::size_t>> devices;
        for (const PlacedPort& port : placed.ports) {
            const PciFunction* const bridge =
                port.bridge ? view_.bus().find(*port.bridge) : nullptr;
            devices.push_back(bridge == nullptr ? std::vector<std::size_t>()
                                                : devicesAlone(*bridge));
            const bool needsBox =
                bridge != nullptr && devices.back().empty() && isMoreThanALine(*bridge);
            boxes.push_back(needsBox ? addBox(bridge->secondaryBus, bridge, view_.below(*bridge))
                                     : std::nullopt);
        }
        DeviceParts& parts = boxes_.devices[device];
        parts.inside = std::move(inside);
        parts.bridgeBoxes = std::move(boxes);
        parts.devicesInPorts = std::move(devices);
        return true;
    }

    [[nodiscard]] bool isPortOf(const PciFunction& function, std::size_t device) const {
        const auto& marks = view_.marksOf(function.handle());
        return std::any_of(marks.begin(), marks.end(), [&](const TreeMark& mark) {
            return mark.device == device && mark.role == TreeMark::Role::port;
        });
    }

    void addInside(const Functions& functions, std::size_t device, std::set<std::uint32_t>& seen,
                   std::vector<FunctionRow>& inside) {
        for (const PciFunction* const function : functions) {
            if (!seen.insert(function->handle()).second || isPortOf(*function, device))
                continue;
            if (isPartOf(*function, device)) {
                addInside(shownBelow(*function), device, seen, inside);
            } else if (hasPartBelow(*function, device)) {
                inside.push_back({function, std::nullopt, false, std::nullopt});
                addInside(shownBelow(*function), device, seen, inside);
            } else {
                inside.push_back(rowOf(*function));
            }
        }
    }

    // The devices in a connector, begun, when they are all that is there.
    std::vector<std::size_t> devicesAlone(const PciFunction& bridge) {
        std::vector<std::size_t> devices;
        for (const PciFunction* const function : shownBelow(bridge)) {
            const auto owner = ownerOf(*function);
            if (!owner)
                return {};
            if (std::find(devices.begin(), devices.end(), *owner) == devices.end())
                devices.push_back(*owner);
        }
        devices.erase(std::remove_if(devices.begin(), devices.end(),
                                     [&](std::size_t each) { return begun_[each]; }),
                      devices.end());
        for (const std::size_t each : devices)
            beginDevice(each);
        return devices;
    }

    [[nodiscard]] bool isMoreThanALine(const PciFunction& bridge) const {
        const Functions below = shownBelow(bridge);
        return below.size() > 1 || (below.size() == 1 && !shownBelow(*below.front()).empty());
    }

    const BusTreeView& view_;
    std::vector<bool> begun_; // by device
    MachineBoxes boxes_;
};

} // namespace

MachineBoxes machineBoxes(const BusTreeView& view, const Placement& placement) {
    return Boxes(view, placement).take();
}

} // namespace tavctl
