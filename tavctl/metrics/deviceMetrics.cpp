#include "tavctl/metrics/deviceMetrics.h"

#include "tavctl/metrics/connectedFunctions.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavctl {

namespace {

using Kind = MetricText::Kind;
using Value = std::optional<double>;

Value lanes(std::int32_t count) {
    return count > 0 ? Value(count) : std::nullopt;
}

Value degraded(const LinkState& link) {
    return link.isKnown() ? Value(link.isDegraded() ? 1 : 0) : std::nullopt;
}

// What is told of a link, of a port as of the one upstream.
struct LinkMetric {
    std::string_view name;
    std::string_view help;
    Value (*value)(const LinkState&);
};

constexpr LinkMetric kLinkMetrics[] = {
    {"link_width_lanes", "lanes at which it runs.",
     [](const LinkState& link) { return lanes(link.width); }},
    {"link_possible_width_lanes", "lanes that both of its ends can.",
     [](const LinkState& link) { return lanes(link.ableWidth); }},
    {"link_speed_transfers_per_second", "transfers per second at which it runs.",
     [](const LinkState& link) { return linkTransfers(link.speed); }},
    {"link_possible_speed_transfers_per_second", "transfers per second that both of its ends can.",
     [](const LinkState& link) { return linkTransfers(link.ableSpeed); }},
};

template <typename ValueOf>
void addPortFamily(MetricText& text, const Listing& listing, std::string_view name,
                   std::string_view help, ValueOf valueOf) {
    text.beginFamily(name, Kind::gauge, help);
    for (const ListingEntry& entry : listing.devices) {
        for (std::size_t i = 0; i < entry.ports.size(); ++i) {
            const ListedPort& port = entry.device.ports[i];
            if (const Value value = valueOf(port, entry.ports[i]))
                text.add({{"name", entry.device.terminalName}, {"port", port.label}}, *value);
        }
    }
}

template <typename ValueOf>
void addUpstreamFamily(MetricText& text, const Listing& listing, std::string_view name,
                       std::string_view help, ValueOf valueOf) {
    text.beginFamily(name, Kind::gauge, help);
    for (const ListingEntry& entry : listing.devices) {
        if (const Value value = valueOf(entry.upstream))
            text.add({{"name", entry.device.terminalName}}, *value);
    }
}

void addDevices(MetricText& text, const Listing& listing) {
    text.beginFamily("tav_devices", Kind::gauge, "Devices that are there.");
    text.add({}, static_cast<double>(listing.devices.size()));
    text.beginFamily("tav_device", Kind::info,
                     "A device that is there, and the PCI function that it is reported by.");
    for (const ListingEntry& entry : listing.devices) {
        const ListedDevice& device = entry.device;
        text.add({{"name", device.terminalName},
                  {"model", device.model},
                  {"category", categoryName(device.category)},
                  {"segment", "0000"},
                  {"bus", fmt::format("{:02x}", device.bus)},
                  {"device", fmt::format("{:02x}", device.device)},
                  {"function", fmt::format("{:x}", device.function)}});
    }
    text.beginFamily("tav_names_not_stored", Kind::gauge,
                     "Devices that are there under a name that is not stored.");
    text.add({}, static_cast<double>(std::count_if(
                     listing.devices.begin(), listing.devices.end(),
                     [](const ListingEntry& entry) { return !entry.device.isStored; })));
}

void addAbsent(MetricText& text, const Listing& listing) {
    text.beginFamily("tav_absent_names", Kind::gauge,
                     "Names that are stored for devices that are not there.");
    text.add({}, static_cast<double>(listing.absent.size()));
    text.beginFamily("tav_name_absent", Kind::info,
                     "A name of which no device is there, and what is nearest to its place.");
    for (const ListingAbsence& absence : listing.absent)
        text.add({{"name", absence.device.name},
                  {"model", absence.device.model},
                  {"place", absence.place}});
}

void addPorts(MetricText& text, const Listing& listing) {
    addPortFamily(text, listing, "tav_port_occupied",
                  "Whether something answers behind a port (1) or not (0).",
                  [](const ListedPort&, const ListedLink& seen) {
                      return seen.occupied ? Value(*seen.occupied ? 1 : 0) : std::nullopt;
                  });
    addPortFamily(text, listing, "tav_port_link_max_width_lanes",
                  "Lanes that the port itself has at most.",
                  [](const ListedPort& port, const ListedLink&) {
                      return lanes(port.linkWidth.value_or(0));
                  });
    addPortFamily(text, listing, "tav_port_link_max_speed_transfers_per_second",
                  "Transfers per second that the port itself can at most.",
                  [](const ListedPort& port, const ListedLink&) {
                      return linkTransfers(port.linkSpeed.value_or(0));
                  });
    for (const LinkMetric& metric : kLinkMetrics)
        addPortFamily(
            text, listing, fmt::format("tav_port_{}", metric.name),
            fmt::format("Link of a port: {}", metric.help),
            [&](const ListedPort&, const ListedLink& seen) { return metric.value(seen.link); });
    addPortFamily(text, listing, "tav_link_degraded",
                  "Whether the link of a port runs below what both of its ends can (1) or not (0).",
                  [](const ListedPort&, const ListedLink& seen) { return degraded(seen.link); });
}

void addUpstreamLinks(MetricText& text, const Listing& listing) {
    for (const LinkMetric& metric : kLinkMetrics)
        addUpstreamFamily(text, listing, fmt::format("tav_upstream_{}", metric.name),
                          fmt::format("Link of a device to the bus above it: {}", metric.help),
                          metric.value);
    addUpstreamFamily(text, listing, "tav_upstream_link_degraded",
                      "Whether the link of a device to the bus above it runs below what both of "
                      "its ends can (1) or not (0).",
                      degraded);
}

void addLeftOut(MetricText& text, const Listing& listing) {
    text.beginFamily("tav_functions_left_out", Kind::gauge,
                     "PCI functions that the look left out, or knows only in part (header_only).");
    if (!listing.leftOut)
        return;
    const auto add = [&](std::string_view reason, std::size_t count) {
        text.add({{"reason", reason}}, static_cast<double>(count));
    };
    add("other_domain", listing.leftOut->otherDomains);
    add("dead", listing.leftOut->dead);
    add("unreadable", listing.leftOut->unreadable);
    add("header_only", listing.leftOut->headerOnly);
}

void addConnectors(MetricText& text, const Listing& listing, const WholeBus* bus) {
    text.beginFamily(
        "tav_connector_function", Kind::info,
        "A PCI function behind a connector, with the labels of the PCI collector of "
        "node_exporter. Where boxes are plugged into boxes, name and connector are the "
        "innermost ones, and path has all.");
    if (bus == nullptr)
        return;
    std::vector<ListedDevice> devices;
    devices.reserve(listing.devices.size());
    for (const ListingEntry& entry : listing.devices)
        devices.push_back(entry.device);
    const pcibus::Bus& main = bus->main().bus();
    for (const ConnectedBus& connected : connectedBuses(devices, main)) {
        for (const pcibus::PciFunction& function : main.functionsOn(connected.bus))
            text.add({{"segment", "0000"},
                      {"bus", fmt::format("{:02x}", function.bus)},
                      {"device", fmt::format("{:02x}", function.device)},
                      {"function", fmt::format("{:x}", function.function)},
                      {"name", connected.name},
                      {"connector", connected.connector},
                      {"path", connected.path}});
    }
}

} // namespace

void addDeviceMetrics(MetricText& text, const Listing& listing, const WholeBus* bus) {
    addDevices(text, listing);
    addAbsent(text, listing);
    addPorts(text, listing);
    addUpstreamLinks(text, listing);
    addConnectors(text, listing, bus);
    addLeftOut(text, listing);
}

void addLookMetrics(MetricText& text, const LookTaken& look) {
    text.beginFamily("tav_last_look_success", Kind::gauge,
                     "Whether the last look at the devices succeeded (1) or failed (0).");
    text.add({}, look.success ? 1 : 0);
    text.beginFamily("tav_last_look_timestamp_seconds", Kind::gauge,
                     "When the last look at the devices was taken, in seconds since 1970.");
    text.add({}, look.at);
    text.beginFamily("tav_last_look_duration_seconds", Kind::gauge,
                     "How long the last look at the devices took.");
    text.add({}, look.took);
}

} // namespace tavctl
