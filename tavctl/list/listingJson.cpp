#include "tavctl/bus/leftOutWords.h"
#include "tavctl/bus/linkJson.h"
#include "tavctl/list/listing.h"
#include "tavctl/words/document.h"

#include <fmt/core.h>

namespace tavctl {

namespace {

Json orNull(const std::optional<std::int32_t>& value) {
    return value ? Json(*value) : Json(nullptr);
}

Json linkJson(const LinkState& link) {
    Json object = Json::object();
    addLink(object, link);
    return object;
}

Json portJson(const ListedPort& port, const ListedLink& seen) {
    Json object{{"label", port.label},
                {"secondaryBus", orNull(port.secondaryBus)},
                {"linkWidth", orNull(port.linkWidth)},
                {"linkSpeed", orNull(port.linkSpeed)}};
    addLink(object, seen.link);
    object.add("occupied", seen.occupied ? Json(*seen.occupied) : Json(nullptr));
    return object;
}

Json deviceJson(const ListingEntry& entry) {
    const ListedDevice& device = entry.device;
    Json ports = Json::array();
    for (std::size_t i = 0; i < device.ports.size(); ++i)
        ports.push_back(portJson(device.ports[i], entry.ports[i]));
    return Json{{"name", device.terminalName},
                {"model", device.model},
                {"category", categoryName(device.category)},
                {"address", "0000:" + addressOf(device)},
                {"slotPath", textOrNull(device.slotPath)},
                {"stored", device.isStored},
                {"index", entry.index},
                {"upstreamBus", orNull(device.upstreamBus)},
                {"upstreamLink", linkJson(entry.upstream)},
                {"linkWidthPerLabel", orNull(device.linkWidthPerLabel)},
                {"ports", std::move(ports)}};
}

} // namespace

// Put together from its parts' texts: of very many stored names all their values at once would take
// several times the room.
std::string listingMembers(const Listing& listing) {
    std::string text = R"("leftOut":)" + leftOutJson(listing.leftOut).text();
    text += R"(,"devices":[)";
    for (const ListingEntry& entry : listing.devices) {
        text += &entry == listing.devices.data() ? "" : ",";
        text += deviceJson(entry).text();
    }
    text += R"(],"absent":[)";
    for (const ListingAbsence& absence : listing.absent) {
        text += &absence == listing.absent.data() ? "" : ",";
        text += Json{{"name", absence.device.name},
                     {"model", absence.device.model},
                     {"slotPath", absence.device.slotPath},
                     {"place", textOrNull(absence.place)}}
                    .text();
    }
    return text + "]";
}

std::string listingAsJson(const Listing& listing) {
    std::string text = newDocument().text();
    text.back() = ','; // the members follow
    return text + listingMembers(listing) + "}\n";
}

} // namespace tavctl
