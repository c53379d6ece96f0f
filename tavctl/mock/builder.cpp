#include "tavctl/mock/builder.h"

#include "pcibus/pciFunction.h"
#include "pcibus/position.h"
#include "tavctl/bus/busAddress.h"
#include "tavctl/mock/machineText.h"
#include "tavctl/mock/planValues.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <utility>

namespace tavctl::mock {

namespace {

constexpr tPciIds kHostBridge{0x8086, 0x29C0, 0x1AF4, 0x1100};
constexpr tPciIds kRootPort{0x8086, 0x3420, 0x8086, 0x0000};
constexpr tPciIds kOtherFunction{0x1B36, 0x0005, 0x1AF4, 0x1100};

// The bus that something is plugged into.
struct Socket {
    std::uint8_t rootBus = 0;
    Way way; // of the bridge above it
    Function* bridge = nullptr;
    bool isMade = false; // whether the bridge is there for this alone
};

struct Connector {
    std::string name;
    std::string label;
    Socket socket;
};

class Builder {
public:
    Builder(const Plan& plan, const std::vector<std::size_t>& anchors, const Catalog& catalog,
            const RecordedMachine* recorded, const std::vector<PresentDevice>& present)
        : plan_(plan), anchors_(anchors), catalog_(catalog), recorded_(recorded),
          names_(namesOf(plan, catalog, present)) {
        if (recorded == nullptr)
            return;
        built_.machine = machineOf(*recorded);
        for (const PresentDevice& device : present) {
            known_.insert(device.name);
            for (const auto& each : device.connectors) {
                const Socket socket = socketAt(each.bridge);
                if (socket.bridge != nullptr)
                    connectors_.push_back({device.name, each.label, socket});
            }
        }
    }

    BuiltMachine build() {
        built_.boxes.resize(plan_.boxes.size());
        known_.insert(names_.begin(), names_.end());
        std::vector<std::size_t> waiting;
        for (std::size_t i = 0; i < plan_.boxes.size(); ++i)
            waiting.push_back(i);
        while (!waiting.empty()) {
            const std::size_t before = waiting.size();
            std::erase_if(waiting, [&](std::size_t box) { return tryBox(box); });
            if (waiting.size() == before)
                refuseCircle(waiting.front());
        }
        for (const PlannedEndpoint& endpoint : plan_.endpoints)
            addEndpoint(endpoint);
        settle(built_.machine, catalog_.unasked(kOtherFunction));
        built_.isRenumbered = numberBuses(built_.machine);
        return std::move(built_);
    }

private:
    // False while it waits for the box that it is in.
    bool tryBox(std::size_t number) {
        const PlannedBox& plan = plan_.boxes[number];
        std::optional<Socket> socket = socketFor(plan.in, /*mayWait=*/true);
        if (!socket)
            return false;
        MadeBox box = makeBox(plan, catalog_, anchors_[number], socket->bridge->below);
        box.name = names_[number];
        box.rootBus = socket->rootBus;
        box.way = socket->way;
        if (const auto up = plan.ports.find(""); up != plan.ports.end() && up->second.bus != 0) {
            if (socket->bridge->isRecorded && socket->bridge->secondary != up->second.bus)
                refuse(up->second.place, fmt::format("the box is on bus {:02x}, as recorded",
                                                     socket->bridge->secondary));
            socket->bridge->wishedBus = up->second.bus;
            socket->bridge->wishPlace = up->second.place;
        }
        if (socket->isMade)
            fitRootPort(*socket->bridge);
        for (const auto& label : box.widths.labels) {
            Way way = socket->way;
            const Way& port = box.shape.ports[label.port].value();
            way.insert(way.end(), port.begin(), port.end());
            connectors_.push_back(
                {box.name, label.label, {socket->rootBus, way, box.ports[label.port], false}});
        }
        placed_.insert(box.name);
        built_.boxes[number] = std::move(box);
        return true;
    }

    // A root port is made for what is plugged into it.
    static void fitRootPort(Function& port) {
        for (const auto& [hop, function] : port.below) {
            port.link.maximumWidth = std::max(port.link.maximumWidth, function->link.maximumWidth);
            port.link.maximumSpeed = std::max(port.link.maximumSpeed, function->link.maximumSpeed);
        }
    }

    void addEndpoint(const PlannedEndpoint& plan) {
        const Socket socket = socketFor(plan.in, /*mayWait=*/false).value();
        auto& function = socket.bridge->below[0];
        if (function)
            refuse(plan.in.place, "something else stands there already");
        function = std::make_unique<Function>();
        function->ids = plan.ids;
        function->deviceClass = plan.deviceClass;
        function->hasLink = socket.bridge->hasLink;
        function->link.maximumWidth = std::max<std::uint8_t>(1, plan.link.maximumWidth);
        function->link.maximumSpeed = std::max<std::uint8_t>(1, plan.link.maximumSpeed);
        function->link.width = plan.link.width;
        function->link.speed = plan.link.speed;
        if (socket.isMade)
            fitRootPort(*socket.bridge);
    }

    // "root", "root 40", an address, or "TAV1:2". None for a connector of a box that waits itself.
    std::optional<Socket> socketFor(const Said& in, bool mayWait) {
        if (!in.isSaid() || in.text == "root")
            return newRootPort(0, in.place);
        constexpr std::string_view kRoot = "root ";
        if (in.text.starts_with(kRoot))
            return newRootPort(readRootBus({in.text.substr(kRoot.size()), in.place}), in.place);
        if (const auto handle = readBusAddress(in.text))
            return recordedBridge(*handle, in);
        return connector(in, mayWait);
    }

    Socket newRootPort(std::uint8_t bus, const std::string& place) {
        const bool isNew = !built_.machine.roots.contains(bus);
        if (isNew && recorded_ != nullptr && recorded_->bus->parentOfBus(bus) != nullptr)
            refuse(place, fmt::format("bus {:02x} is no root bus of the recorded machine", bus));
        Functions& functions = built_.machine.roots[bus];
        if (isNew) {
            auto& host = functions[0];
            host = std::make_unique<Function>();
            host->ids = catalog_.unasked(kHostBridge);
            host->deviceClass = kHostBridgeClass;
            host->hasLink = false;
        }
        // Each port is a device of its own as long as there are any, behind the bridges that are
        // there, so that these keep their bus numbers.
        constexpr unsigned kHops = 256;
        unsigned first = 1;
        for (const auto& [hop, function] : functions) {
            if (function->isBridge())
                first = pcibus::deviceOfHop(hop) + 1U;
        }
        for (unsigned order = 0; order < kHops; ++order) {
            const auto hop = static_cast<std::uint8_t>((first + order) % 32U << 3U | order / 32U);
            if (functions.contains(hop))
                continue;
            auto& port = functions[hop];
            port = std::make_unique<Function>();
            port->ids = catalog_.unasked(kRootPort);
            port->deviceClass = kBridgeClass;
            port->headerType = 1;
            return {bus, {hop}, port.get(), true};
        }
        refuse(place, fmt::format("root bus {:02x} has no room for another port", bus));
    }

    Socket recordedBridge(std::uint32_t handle, const Said& in) {
        const pcibus::PciFunction* const bridge =
            recorded_ == nullptr ? nullptr : recorded_->bus->findBridge(handle);
        if (bridge == nullptr)
            refuse(in.place,
                   recorded_ == nullptr
                       ? fmt::format("{} is an address, and there is no recorded "
                                     "machine that it is of",
                                     inQuotes(in.text))
                       : fmt::format("no bridge is at {} of the recorded machine", in.text));
        if (bridge->secondaryBus != 0 &&
            recorded_->bus->parentOfBus(bridge->secondaryBus) != bridge)
            refuse(in.place, "another bridge is the parent of the bus below it");
        Socket socket = socketAt(handle);
        if (socket.bridge == nullptr)
            refuse(in.place, "it is below a CardBus bridge, where the plug-in sees a machine of "
                             "its own");
        return socket;
    }

    // Of a recorded bridge; without it where the plug-in's tree is another than the machine's.
    [[nodiscard]] Socket socketAt(std::uint32_t handle) const {
        const pcibus::Position position =
            pcibus::positionOf(*recorded_->bus, *recorded_->bus->find(handle));
        const auto hops = position.hops();
        const Way way(hops.rbegin(), hops.rend());
        return {position.rootBus, way, built_.machine.at(position.rootBus, way), false};
    }

    // Labels may have colons, and so may names.
    std::optional<Socket> connector(const Said& in, bool mayWait) {
        for (const std::string& name : known_) {
            if (!in.text.starts_with(name + ":"))
                continue;
            const std::string label = in.text.substr(name.size() + 1);
            for (const Connector& each : connectors_) {
                if (each.name == name && each.label == label)
                    return each.socket;
            }
            if (mayWait && !placed_.contains(name) && isPlanned(name))
                return std::nullopt;
            refuseLabel(in, name, label);
        }
        std::vector<std::string> names(known_.begin(), known_.end());
        refuse(in.place,
               fmt::format("{} is no place; one is written as NAME:LABEL{}{}, as root, as root 40 "
                           "or as the address of a recorded bridge",
                           inQuotes(in.text), names.empty() ? "" : " of ", enumerated(names)));
    }

    [[nodiscard]] bool isPlanned(const std::string& name) const {
        return std::find(names_.begin(), names_.end(), name) != names_.end();
    }

    [[noreturn]] void refuseLabel(const Said& in, const std::string& name,
                                  const std::string& label) const {
        std::vector<std::string> labels;
        for (const Connector& each : connectors_) {
            if (each.name == name)
                labels.push_back(each.label);
        }
        refuse(in.place,
               fmt::format("{} has no connector {}; {}", name, inQuotes(label),
                           labels.empty() ? std::string("it has none")
                                          : fmt::format("it has {}", enumerated(labels))));
    }

    [[noreturn]] void refuseCircle(std::size_t box) const {
        refuse(plan_.boxes[box].in.place, fmt::format("{} would be within itself", names_[box]));
    }

    const Plan& plan_;
    const std::vector<std::size_t>& anchors_;
    const Catalog& catalog_;
    const RecordedMachine* recorded_;
    std::vector<std::string> names_;
    BuiltMachine built_;
    std::set<std::string> known_;  // names of what has connectors, or will
    std::set<std::string> placed_; // boxes of the plan
    std::vector<Connector> connectors_;
};

} // namespace

std::vector<std::string> namesOf(const Plan& plan, const Catalog& catalog,
                                 const std::vector<PresentDevice>& present) {
    std::set<std::string> taken;
    for (const PresentDevice& device : present)
        taken.insert(device.name);
    for (const PlannedBox& box : plan.boxes) {
        if (box.name.isSaid() && !taken.insert(box.name.text).second)
            refuse(box.name.place,
                   fmt::format("{} is a device of the recorded machine", inQuotes(box.name.text)));
    }
    std::vector<std::string> names;
    for (const PlannedBox& box : plan.boxes) {
        if (box.name.isSaid()) {
            names.push_back(box.name.text);
            continue;
        }
        const auto& base = catalog.models()[catalog.numberOf(box.model)].model.terminalNameBase;
        std::size_t number = 1;
        while (taken.contains(fmt::format("{}{}", base, number)))
            ++number;
        names.push_back(fmt::format("{}{}", base, number));
        taken.insert(names.back());
    }
    return names;
}

BuiltMachine build(const Plan& plan, const std::vector<std::size_t>& anchors,
                   const Catalog& catalog, const RecordedMachine* recorded,
                   const std::vector<PresentDevice>& present) {
    return Builder(plan, anchors, catalog, recorded, present).build();
}

} // namespace tavctl::mock
