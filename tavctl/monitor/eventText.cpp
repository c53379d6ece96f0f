#include "tavctl/host/deviceListing.h"
#include "tavctl/monitor/eventTime.h"
#include "tavctl/words/printable.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <string_view>

namespace tavctl::monitor {

namespace {

// As people see an address of domain 0.
std::string shortText(const std::string& address) {
    constexpr std::string_view kMain = "0000:";
    return address.starts_with(kMain) ? address.substr(kMain.size()) : address;
}

std::string connectorText(const ConnectorName& connector) {
    const std::string device = markedName(connector.device, connector.isStored);
    if (connector.labels.empty())
        return fmt::format("a port of {} without a label", device);
    return connectorName(device, connector.labels);
}

std::string nameOf(const SeenDevice& device) {
    return markedName(device.name, device.isStored);
}

// "TAV1 (TAV-B3 Switch Box)".
std::string deviceText(const SeenDevice& device) {
    return fmt::format("{} ({})", nameOf(device), device.model);
}

// "06:00.0 Some Card".
std::string functionText(const SeenFunction& function) {
    std::string name = function.deviceName;
    if (name.empty())
        name = fmt::format("{}{:04x}:{:04x}",
                           function.vendorName.empty() ? "" : function.vendorName + " ",
                           function.vendorId, function.deviceId);
    return fmt::format("{} {}", shortText(function.address), name);
}

std::string placeText(const SeenDevice& device) {
    return device.in
               ? fmt::format("at {}, in {}", shortText(device.address), connectorText(*device.in))
               : fmt::format("at {}", shortText(device.address));
}

std::string movedText(const Event& event) {
    const SeenDevice& now = *event.device;
    const SeenDevice& before = *event.before;
    return now.slotPath == before.slotPath
               ? fmt::format("{} has moved from {} to {}: bus numbers have changed",
                             deviceText(now), shortText(before.address), shortText(now.address))
               : fmt::format("{} has moved from {} to another slot, {}", deviceText(now),
                             shortText(before.address), placeText(now));
}

std::string linkOwner(const Event& event) {
    return event.connector ? connectorText(*event.connector)
                           : fmt::format("{} to the computer", nameOf(*event.device));
}

std::string watchingText(const Event& event) {
    const std::string looks =
        event.every ? fmt::format("a look every {}",
                                  counted(static_cast<std::size_t>(event.every->count()), "second"))
                    : std::string();
    if (!event.isWoken)
        return "watching: " + looks;
    return "watching: the system tells of changes" + (looks.empty() ? "" : ", and " + looks);
}

std::string sentenceOf(const Event& event) {
    switch (event.kind) {
    case EventKind::present:
        return fmt::format("{} is there, {}", deviceText(*event.device), placeText(*event.device));
    case EventKind::absent:
        return fmt::format("{} is absent; it stood at {}", deviceText(*event.before),
                           event.before->slotPath);
    case EventKind::watching:
        return watchingText(event);
    case EventKind::arrived:
        return fmt::format("{} has arrived, {}", deviceText(*event.device),
                           placeText(*event.device));
    case EventKind::vanished:
        return fmt::format("{} has vanished; it was {}", deviceText(*event.device),
                           placeText(*event.device));
    case EventKind::moved:
        return movedText(event);
    case EventKind::renamed:
        return fmt::format("{} is called {} now", deviceText(*event.before), nameOf(*event.device));
    case EventKind::plugged:
        return fmt::format("plugged into {}: {}", connectorText(*event.connector),
                           functionText(*event.function));
    case EventKind::pulled:
        return fmt::format("pulled out of {}: {}", connectorText(*event.connector),
                           functionText(*event.function));
    case EventKind::linkDegraded:
        return fmt::format("the link of {} is degraded: it runs {}", linkOwner(event),
                           linkText(*event.link));
    case EventKind::linkRestored:
        return fmt::format("the link of {} is restored: it runs {}", linkOwner(event),
                           linkText(*event.link));
    case EventKind::lookFailed:
        return fmt::format("cannot tell what is there: {}", event.reason);
    case EventKind::lookWorks:
        return "what is there can be told again";
    case EventKind::ended:
        break;
    }
    return fmt::format("ended after {}", counted(event.looks, "look"));
}

} // namespace

std::string eventAsText(const Event& event, Event::Time time) {
    return fmt::format("{}  {}\n", timeText(time, TimeParts::seconds),
                       printable(sentenceOf(event)));
}

} // namespace tavctl::monitor
