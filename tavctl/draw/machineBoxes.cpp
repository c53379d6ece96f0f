#include "tavctl/draw/machineBoxes.h"

#include <algorithm>
#include <set>

namespace tavctl {

namespace {

using pcibus::PciFunction;

// More would make a tile much higher than it is wide.
constexpr std::size_t kMostJoined = 4;

// Where a box is led from.
struct Origin {
    enum class Kind : std::uint8_t { nothing, boxRow, insideRow, port };
    Kind kind = Kind::nothing;
    std::size_t box = 0; // of a bridge, or else of a device
    std::size_t number = 0;
};

// What is left to do. A box leads to boxes that lead to boxes, as deep as the bus is, which is too
// much for the stack of a thread.
struct Task {
    enum class Kind : std::uint8_t { bridgeBox, row, separation, device, port };
    Kind kind = Kind::bridgeBox;
    Origin origin;                       // of a row and a port: themselves
    const PciFunction* bridge = nullptr; // of a bridge box: the one above it; null: a root bus
    std::uint8_t bus = 0;                // of a bridge box
    std::size_t number = 0;              // of a separation and a device: whose

    static Task rootBox(std::uint8_t root) { return {Kind::bridgeBox, {}, nullptr, root, 0}; }
    static Task boxBelow(const PciFunction& bridge, const Origin& origin) {
        return {Kind::bridgeBox, origin, &bridge, bridge.secondaryBus, 0};
    }
    static Task rowAt(const Origin& origin) { return {Kind::row, origin, nullptr, 0, 0}; }
    static Task separation(std::size_t box) { return {Kind::separation, {}, nullptr, 0, box}; }
    static Task wholeDevice(std::size_t device) { return {Kind::device, {}, nullptr, 0, device}; }
    static Task portAt(const Origin& origin) { return {Kind::port, origin, nullptr, 0, 0}; }
};

class Boxes {
public:
    Boxes(const BusTreeView& view, const Placement& placement) : view_(view) {
        for (std::size_t i = 0; i < placement.devices.size(); ++i) {
            boxes_.devices.emplace_back();
            boxes_.devices[i].isDrawn = placement.devices[i].has_value();
        }
        begun_.resize(boxes_.devices.size());
        for (const std::uint8_t root : view_.bus().rootBuses()) {
            waiting_.push_back(Task::rootBox(root));
            doAll();
        }
        // Devices that stand in each other have no place of their own.
        for (std::size_t i = 0; i < boxes_.devices.size(); ++i) {
            if (boxes_.devices[i].isDrawn && !begun_[i]) {
                boxes_.devices[i].isApart = true;
                waiting_.push_back(Task::wholeDevice(i));
                doAll();
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
        Functions waiting{&bridge};
        while (!waiting.empty()) {
            const auto below = view_.below(*waiting.back());
            waiting.pop_back();
            for (const PciFunction& function : below) {
                if (isPartOf(function, device))
                    return true;
                waiting.push_back(&function);
            }
        }
        return false;
    }

    // In the order in which a reader follows the lines: what a box leads to is done, all the way
    // down, before its next row.
    void doAll() {
        while (!waiting_.empty()) {
            const Task task = waiting_.back();
            waiting_.pop_back();
            switch (task.kind) {
            case Task::Kind::bridgeBox:
                addBox(task);
                break;
            case Task::Kind::row:
                followRow(task.origin);
                break;
            case Task::Kind::separation:
                separate(boxes_.bridges[task.number]);
                break;
            case Task::Kind::device:
                beginDevice(task.number);
                break;
            case Task::Kind::port:
                followPort(task.origin);
                break;
            }
        }
    }

    void addRows(Origin::Kind kind, std::size_t box, std::size_t count) {
        while (count-- > 0)
            waiting_.push_back(Task::rowAt({kind, box, count}));
    }

    // Nothing where nothing is shown.
    void addBox(const Task& task) {
        const Functions all = task.bridge == nullptr ? shown(view_.bus().functionsOn(task.bus))
                                                     : shownBelow(*task.bridge);
        if (all.empty())
            return;
        const std::size_t number = boxes_.bridges.size();
        BridgeBox& box = boxes_.bridges.emplace_back();
        box.bus = task.bus;
        box.bridge = task.bridge;
        box.isApart = task.bridge == nullptr;
        for (const PciFunction* const function : all)
            box.rows.push_back({function, ownerOf(*function), false, std::nullopt});
        leadTo(number, task.origin);
        waiting_.push_back(Task::separation(number));
        addRows(Origin::Kind::boxRow, number, all.size());
    }

    void leadTo(std::size_t box, const Origin& origin) {
        if (origin.kind == Origin::Kind::port)
            boxes_.devices[origin.box].bridgeBoxes[origin.number] = box;
        else if (origin.kind != Origin::Kind::nothing)
            rowAt(origin).bridgeBox = box;
    }

    FunctionRow& rowAt(const Origin& origin) {
        auto& rows = origin.kind == Origin::Kind::boxRow ? boxes_.bridges[origin.box].rows
                                                         : boxes_.devices[origin.box].inside;
        return rows[origin.number];
    }

    void followRow(const Origin& origin) {
        FunctionRow& row = rowAt(origin);
        if (row.isOnWay)
            return;
        if (!row.device) {
            waiting_.push_back(Task::boxBelow(*row.function, origin));
        } else if (!begun_[*row.device]) {
            row.leadsToDevice = true;
            waiting_.push_back(Task::wholeDevice(*row.device));
        }
    }

    // No line leads from the rows of a box that leads to many.
    void separate(BridgeBox& box) {
        const auto leads = [](const FunctionRow& row) {
            return row.leadsToDevice || row.bridgeBox;
        };
        const auto count = std::count_if(box.rows.begin(), box.rows.end(), leads);
        if (static_cast<std::size_t>(count) <= kMostJoined)
            return;
        for (const FunctionRow& row : box.rows) {
            if (row.bridgeBox)
                boxes_.bridges[*row.bridgeBox].isApart = true;
            if (row.leadsToDevice)
                boxes_.devices[*row.device].isApart = true;
        }
        box.isList = true;
    }

    void beginDevice(std::size_t device) {
        begun_[device] = true;
        const PlacedDevice& placed = view_.devices()[device];
        DeviceParts& parts = boxes_.devices[device];
        parts.inside = rowsInside(device);
        parts.bridgeBoxes.assign(placed.ports.size(), std::nullopt);
        parts.devicesInPorts.assign(placed.ports.size(), {});
        for (std::size_t port = placed.ports.size(); port-- > 0;)
            waiting_.push_back(Task::portAt({Origin::Kind::port, device, port}));
        addRows(Origin::Kind::insideRow, device, parts.inside.size());
    }

    [[nodiscard]] bool isPortOf(const PciFunction& function, std::size_t device) const {
        const auto& marks = view_.marksOf(function.handle());
        return std::any_of(marks.begin(), marks.end(), [&](const TreeMark& mark) {
            return mark.device == device && mark.role == TreeMark::Role::port;
        });
    }

    [[nodiscard]] std::vector<FunctionRow> rowsInside(std::size_t device) const {
        std::vector<FunctionRow> inside;
        std::set<std::uint32_t> seen;
        Functions waiting; // the next one last
        const auto addBelow = [&](const PciFunction& bridge) {
            const Functions below = shownBelow(bridge);
            waiting.insert(waiting.end(), below.rbegin(), below.rend());
        };
        for (const std::uint32_t handle : functionsOf(view_.devices()[device])) {
            const PciFunction* const own = view_.bus().find(handle);
            if (own != nullptr && !isPortOf(*own, device))
                addBelow(*own);
            while (!waiting.empty()) {
                const PciFunction& function = *waiting.back();
                waiting.pop_back();
                if (!seen.insert(function.handle()).second || isPortOf(function, device))
                    continue;
                if (isPartOf(function, device)) {
                    addBelow(function);
                } else if (hasPartBelow(function, device)) {
                    inside.push_back({&function, std::nullopt, false, std::nullopt, true});
                    addBelow(function);
                } else {
                    inside.push_back({&function, ownerOf(function), false, std::nullopt});
                }
            }
        }
        return inside;
    }

    void followPort(const Origin& origin) {
        const PlacedPort& port = view_.devices()[origin.box].ports[origin.number];
        const PciFunction* const bridge = port.bridge ? view_.bus().find(*port.bridge) : nullptr;
        if (bridge == nullptr)
            return;
        const std::vector<std::size_t> devices = devicesAlone(*bridge);
        for (std::size_t i = devices.size(); i-- > 0;)
            waiting_.push_back(Task::wholeDevice(devices[i]));
        if (devices.empty() && isMoreThanALine(*bridge))
            waiting_.push_back(Task::boxBelow(*bridge, origin));
        boxes_.devices[origin.box].devicesInPorts[origin.number] = devices;
    }

    // The devices in a connector that are not begun, when devices are all that is there.
    [[nodiscard]] std::vector<std::size_t> devicesAlone(const PciFunction& bridge) const {
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
        return devices;
    }

    [[nodiscard]] bool isMoreThanALine(const PciFunction& bridge) const {
        const Functions below = shownBelow(bridge);
        return below.size() > 1 || (below.size() == 1 && !shownBelow(*below.front()).empty());
    }

    const BusTreeView& view_;
    std::vector<bool> begun_;   // by device
    std::vector<Task> waiting_; // the next one last
    MachineBoxes boxes_;
};

} // namespace

MachineBoxes machineBoxes(const BusTreeView& view, const Placement& placement) {
    return Boxes(view, placement).take();
}

} // namespace tavctl
