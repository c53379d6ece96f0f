#include "tavctl/monitor/difference.h"

#include <algorithm>
#include <functional>

namespace tavctl::monitor {

namespace {

// A device in both states.
struct Pair {
    const SeenDevice* before;
    const SeenDevice* now;
};

// Each device of the one state with its counterpart in the other.
struct Pairing {
    std::vector<Pair> pairs;
    std::vector<const SeenDevice*> vanished;
    std::vector<const SeenDevice*> arrived;
};

// Takes the pairs that are alike out of what is left over; of several alike the first ones.
void pairUp(Pairing& pairing,
            const std::function<bool(const SeenDevice&, const SeenDevice&)>& areAlike) {
    std::erase_if(pairing.vanished, [&](const SeenDevice* before) {
        const auto now =
            std::find_if(pairing.arrived.begin(), pairing.arrived.end(),
                         [&](const SeenDevice* each) { return areAlike(*before, *each); });
        if (now == pairing.arrived.end())
            return false;
        pairing.pairs.push_back({before, *now});
        pairing.arrived.erase(now);
        return true;
    });
}

Pairing pairDevices(const MachineState& before, const MachineState& now) {
    Pairing pairing;
    for (const SeenDevice& device : before.devices)
        pairing.vanished.push_back(&device);
    for (const SeenDevice& device : now.devices)
        pairing.arrived.push_back(&device);
    const auto hasName = [](const SeenDevice& a, const SeenDevice& b) {
        return a.name == b.name && a.model == b.model;
    };
    // Of several with one name, the one in the same place first.
    pairUp(pairing, [&](const SeenDevice& a, const SeenDevice& b) {
        return hasName(a, b) && a.slotPath == b.slotPath;
    });
    pairUp(pairing, hasName);
    pairUp(pairing, [](const SeenDevice& a, const SeenDevice& b) {
        return !a.slotPath.empty() && a.slotPath == b.slotPath && a.model == b.model;
    });
    return pairing;
}

Event eventOf(EventKind kind, const SeenDevice& device) {
    Event event;
    event.kind = kind;
    event.device = device;
    if (kind == EventKind::arrived || kind == EventKind::vanished || kind == EventKind::present)
        event.connector = device.in;
    return event;
}

ConnectorName nameOf(const SeenDevice& device, const SeenConnector& connector) {
    return {device.name, device.isStored, connector.labels};
}

class Comparison {
public:
    Comparison(const MachineState& before, const MachineState& now)
        : before_(before), now_(now), pairing_(pairDevices(before, now)) {}

    [[nodiscard]] std::vector<Event> events() {
        for (const SeenDevice* const device : pairing_.vanished)
            events_.push_back(eventOf(EventKind::vanished, *device));
        forConnectors(&Comparison::tellPulled);
        for (const Pair& pair : pairing_.pairs)
            tellMoved(pair);
        for (const SeenDevice* const device : pairing_.arrived)
            events_.push_back(eventOf(EventKind::arrived, *device));
        forConnectors(&Comparison::tellPlugged);
        for (const Pair& pair : pairing_.pairs)
            tellLinks(*pair.before, *pair.now);
        for (const SeenDevice* const device : pairing_.arrived)
            tellLinks({}, *device);
        return std::move(events_);
    }

private:
    using TellConnector = void (Comparison::*)(const SeenDevice& device,
                                               const SeenConnector& before,
                                               const SeenConnector& now);

    // The connector of a device that has these labels, of several the first one.
    static const SeenConnector* find(const SeenDevice& device,
                                     const std::vector<std::string>& labels) {
        const auto found =
            std::find_if(device.connectors.begin(), device.connectors.end(),
                         [&](const SeenConnector& each) { return each.labels == labels; });
        return found == device.connectors.end() ? nullptr : &*found;
    }

    void forConnectors(TellConnector tell) {
        for (const Pair& pair : pairing_.pairs) {
            for (const SeenConnector& now : pair.now->connectors) {
                if (const SeenConnector* const before = find(*pair.before, now.labels))
                    (this->*tell)(*pair.now, *before, now);
            }
        }
    }

    // Those of the one that are not in the other. What stands in the whole other state all the
    // same has another connector to it, as when a description has changed.
    void tellFunctions(EventKind kind, const SeenDevice& device, const SeenConnector& connector,
                       const SeenConnector& other, const MachineState& otherState) {
        for (const SeenFunction& function : connector.functions) {
            const bool isInBoth = std::any_of(
                other.functions.begin(), other.functions.end(), [&](const SeenFunction& each) {
                    return each.place == function.place && each.vendorId == function.vendorId &&
                           each.deviceId == function.deviceId;
                });
            if (isInBoth || otherState.functions.contains(keyOf(function)))
                continue;
            Event event;
            event.kind = kind;
            event.connector = nameOf(device, connector);
            event.function = function;
            events_.push_back(std::move(event));
        }
    }

    void tellPulled(const SeenDevice& device, const SeenConnector& before,
                    const SeenConnector& now) {
        tellFunctions(EventKind::pulled, device, before, now, now_);
    }

    void tellPlugged(const SeenDevice& device, const SeenConnector& before,
                     const SeenConnector& now) {
        tellFunctions(EventKind::plugged, device, now, before, before_);
    }

    void tellMoved(const Pair& pair) {
        const auto tell = [&](EventKind kind) {
            events_.push_back(eventOf(kind, *pair.now));
            events_.back().before = *pair.before;
        };
        if (pair.before->name != pair.now->name)
            tell(EventKind::renamed);
        if (pair.before->address != pair.now->address ||
            pair.before->slotPath != pair.now->slotPath)
            tell(EventKind::moved);
    }

    void tellLinks(const SeenDevice& before, const SeenDevice& now) {
        if (const auto kind = changeOf(before.upstream, now.upstream)) {
            events_.push_back(eventOf(*kind, now));
            events_.back().link = now.upstream;
        }
        for (const SeenConnector& connector : now.connectors) {
            const SeenConnector* const was = find(before, connector.labels);
            const auto kind = changeOf(was == nullptr ? LinkState() : was->link, connector.link);
            if (!kind)
                continue;
            events_.push_back(eventOf(*kind, now));
            events_.back().connector = nameOf(now, connector);
            events_.back().link = connector.link;
        }
    }

    static std::optional<EventKind> changeOf(const LinkState& before, const LinkState& now) {
        if (now.isDegraded())
            return before.isDegraded() && before.width == now.width && before.speed == now.speed
                       ? std::nullopt
                       : std::optional(EventKind::linkDegraded);
        return before.isDegraded() && now.isKnown() ? std::optional(EventKind::linkRestored)
                                                    : std::nullopt;
    }

    const MachineState& before_;
    const MachineState& now_;
    Pairing pairing_;
    std::vector<Event> events_;
};

} // namespace

std::vector<Event> initialEvents(const MachineState& state) {
    std::vector<Event> events = differences({}, state);
    for (Event& event : events) {
        if (event.kind == EventKind::arrived)
            event.kind = EventKind::present;
    }
    for (const AbsentDevice& absent : state.absent) {
        Event event;
        event.kind = EventKind::absent;
        event.before.emplace();
        event.before->name = absent.name;
        event.before->model = absent.model;
        event.before->slotPath = absent.slotPath;
        events.push_back(std::move(event));
    }
    return events;
}

std::vector<Event> differences(const MachineState& before, const MachineState& now) {
    return Comparison(before, now).events();
}

} // namespace tavctl::monitor
