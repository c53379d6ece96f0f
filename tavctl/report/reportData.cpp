#include "tavctl/report/reportData.h"

#include "tavctl/bus/leftOutWords.h"
#include "tavctl/list/listing.h"
#include "tavctl/words/printable.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace tavctl {

namespace {

Json linkAsJson(const LinkState& link) {
    if (!link.isKnown())
        return nullptr;
    Json values = Json::array();
    for (const std::uint8_t value : {link.width, link.ableWidth, link.speed, link.ableSpeed})
        values.push_back(value);
    values.push_back(link.isDegraded() ? 1 : 0);
    return values;
}

// "06:00.0" for "0000:06:00.0": the devices are in domain 0.
std::string shortAddress(const std::string& address) {
    return address.substr(address.find(':') + 1);
}

bool isIn(const SeenDevice& inner, const SeenDevice& outer, const SeenConnector& connector) {
    return inner.in && inner.in->device == outer.name && inner.in->labels == connector.labels;
}

// Within a script's element the one character that could end it.
std::string withoutTags(std::string_view json) {
    std::string text;
    text.reserve(json.size());
    for (const char c : json) {
        if (c == '<')
            text += "\\u003c";
        else
            text += c;
    }
    return text;
}

} // namespace

std::size_t ReportData::Texts::positionOf(const std::string& text) {
    const auto [found, isNew] = positions_.emplace(text, all_.size());
    if (isNew)
        all_.push_back(text);
    return found->second;
}

std::size_t ReportData::positionOf(const SeenFunction& function) {
    const std::size_t position =
        functions_.positionOf(fmt::format("{:04x}:{:04x}", function.vendorId, function.deviceId));
    if (position == functionNames_.size())
        functionNames_.push_back(names_.function(function.vendorId, function.deviceId));
    return position;
}

Json ReportData::boxes(const ReportedMachine& machine) {
    const MachineState state = makeState(machine.devices, {}, machine.bus, names_);
    Json boxes = Json::array();
    for (std::size_t i = 0; i < state.devices.size(); ++i) {
        const SeenDevice& device = state.devices[i];
        Json connectors = Json::array();
        for (std::size_t port = 0; port < device.connectors.size(); ++port) {
            const SeenConnector& connector = device.connectors[port];
            Json inside = Json::array();
            for (std::size_t other = 0; other < state.devices.size(); ++other) {
                if (isIn(state.devices[other], device, connector))
                    inside.push_back(other);
            }
            Json functions = Json::array();
            for (const SeenFunction& function : connector.functions) {
                Json entry = Json::array();
                entry.push_back(shortAddress(function.address));
                entry.push_back(positionOf(function));
                functions.push_back(std::move(entry));
            }
            connectors.push_back(Json{{"l", connector.labels},
                                      {"w", linkAsJson(connector.link)},
                                      {"x", machine.devices[i].ports[port].missing ? 1 : 0},
                                      {"b", std::move(inside)},
                                      {"f", std::move(functions)}});
        }
        const std::string in = !device.in ? std::string()
                               : device.in->labels.empty()
                                   ? device.in->device
                                   : connectorName(device.in->device, device.in->labels);
        boxes.push_back(Json{{"n", device.name},
                             {"s", device.isStored ? 1 : 0},
                             {"m", models_.positionOf(device.model)},
                             {"a", shortAddress(device.address)},
                             {"p", device.slotPath},
                             {"i", in},
                             {"u", linkAsJson(device.upstream)},
                             {"k", std::move(connectors)}});
    }
    return boxes;
}

void ReportData::add(ReportedMachine machine) {
    Json object{{"n", machine.machine},
                {"r", machine.recording},
                {"f", machine.failure ? Json(machine.failure->sentence()) : Json(nullptr)}};
    Json absent = Json::array();
    std::size_t absences = 0;
    if (machine.failure) {
        object.add("x", "");
        object.add("b", Json::array());
    } else {
        object.add("x", machine.bus.leftOut ? leftOutText(*machine.bus.leftOut) : std::string());
        object.add("b", boxes(machine));
        std::vector<ListedDevice> listed;
        std::transform(machine.devices.begin(), machine.devices.end(), std::back_inserter(listed),
                       [](const PlacedDevice& device) { return device.listed; });
        for (const ListingAbsence& each :
             makeListing(listed, std::move(machine.absent), &machine.bus).absent) {
            absent.push_back(std::vector<std::string>{each.device.name, each.device.model,
                                                      each.device.slotPath, each.place});
            ++absences;
        }
    }
    object.add("g", std::move(absent));
    machines_ += object.text() + ",";
    rows_ += fmt::format("<tr><td>{}</td><td>{}</td><td>{}</td></tr>\n", asHtml(machine.recording),
                         machine.failure ? asHtml(machine.failure->sentence())
                                         : std::to_string(machine.devices.size()),
                         absences);
}

std::string ReportData::text(const std::string& title) const {
    std::string machines = machines_;
    if (!machines.empty())
        machines.pop_back();
    return withoutTags(
        fmt::format(R"({{"title":{},"models":{},"texts":{},"ids":{},"machines":[{}]}})",
                    Json(title).text(), Json(models_.all()).text(), Json(functionNames_).text(),
                    Json(functions_.all()).text(), machines));
}

std::string asHtml(const std::string& text) {
    std::string html;
    for (const char c : printable(text)) {
        switch (c) {
        case '<':
            html += "&lt;";
            break;
        case '>':
            html += "&gt;";
            break;
        case '&':
            html += "&amp;";
            break;
        case '"':
            html += "&quot;";
            break;
        default:
            html += c;
        }
    }
    return html;
}

} // namespace tavctl
