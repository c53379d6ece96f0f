#include "tavctl/bus/linkJson.h"
#include "tavctl/monitor/eventTime.h"
#include "tavctl/words/document.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

namespace tavctl::monitor {

namespace {

Json connectorJson(const std::optional<ConnectorName>& connector) {
    return connector ? Json{{"name", connector->device}, {"labels", connector->labels}}
                     : Json(nullptr);
}

Json deviceJson(const std::optional<SeenDevice>& device) {
    if (!device)
        return nullptr;
    return Json{{"name", device->name},
                {"model", device->model},
                {"stored", device->isStored},
                {"address", textOrNull(device->address)},
                {"slotPath", textOrNull(device->slotPath)},
                {"in", connectorJson(device->in)}};
}

Json functionJson(const std::optional<SeenFunction>& function) {
    if (!function)
        return nullptr;
    return Json{{"address", function->address},
                {"vendorId", fmt::format("{:04x}", function->vendorId)},
                {"deviceId", fmt::format("{:04x}", function->deviceId)},
                {"vendorName", textOrNull(function->vendorName)},
                {"deviceName", textOrNull(function->deviceName)}};
}

Json linkJson(const std::optional<LinkState>& link) {
    if (!link)
        return nullptr;
    Json object = Json::object();
    addLink(object, *link);
    return object;
}

} // namespace

const char* eventName(EventKind kind) {
    switch (kind) {
    case EventKind::present:
        return "present";
    case EventKind::absent:
        return "absent";
    case EventKind::watching:
        return "watching";
    case EventKind::arrived:
        return "arrived";
    case EventKind::vanished:
        return "vanished";
    case EventKind::moved:
        return "moved";
    case EventKind::renamed:
        return "renamed";
    case EventKind::plugged:
        return "plugged";
    case EventKind::pulled:
        return "pulled";
    case EventKind::linkDegraded:
        return "linkDegraded";
    case EventKind::linkRestored:
        return "linkRestored";
    case EventKind::lookFailed:
        return "lookFailed";
    case EventKind::lookWorks:
        return "lookWorks";
    case EventKind::ended:
        break;
    }
    return "ended";
}

std::string eventAsJson(const Event& event, Event::Time time) {
    const bool isWatching = event.kind == EventKind::watching;
    Json whole = newDocument();
    whole.add("time", timeText(time, TimeParts::milliseconds));
    whole.add("event", eventName(event.kind));
    whole.add("device", deviceJson(event.device));
    whole.add("before", deviceJson(event.before));
    whole.add("connector", connectorJson(event.connector));
    whole.add("function", functionJson(event.function));
    whole.add("link", linkJson(event.link));
    whole.add("reason", textOrNull(event.reason));
    whole.add("woken", isWatching ? Json(event.isWoken) : Json(nullptr));
    whole.add("everySeconds", event.every ? Json(event.every->count()) : Json(nullptr));
    whole.add("looks", event.kind == EventKind::ended ? Json(event.looks) : Json(nullptr));
    return whole.line();
}

} // namespace tavctl::monitor
