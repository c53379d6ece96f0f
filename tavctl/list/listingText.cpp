#include "tavctl/list/listing.h"
#include "tavctl/words/textTable.h"

#include <fmt/core.h>

namespace tavctl {

namespace {

// A bus as addresses show it.
std::string busText(std::int32_t bus) {
    return fmt::format("bus {:02x}", static_cast<std::uint32_t>(bus));
}

std::string runsText(const LinkState& link) {
    return link.isKnown() ? fmt::format("  runs {}", linkText(link)) : std::string();
}

std::string portText(const ListedPort& port, const ListedLink& seen) {
    std::string text = busText(port.secondaryBus.value_or(0));
    if (port.linkWidth)
        text += fmt::format("  x{}", *port.linkWidth);
    if (port.linkSpeed)
        text += fmt::format("  {}", linkSpeedName(*port.linkSpeed));
    text += runsText(seen.link);
    return seen.occupied == false ? text.append("  empty") : text;
}

// Labels for a cell: "A,B,C".
std::string labelsOf(const ListedDevice& device) {
    std::string labels;
    for (const ListedPort& port : device.ports)
        labels.append(labels.empty() ? "" : ",").append(port.label);
    return labels.empty() ? "-" : labels;
}

std::string linkLines(const ListingEntry& entry, bool degradedOnly) {
    std::string out;
    if (entry.device.upstreamBus && (!degradedOnly || entry.upstream.isDegraded()))
        out += fmt::format("  upstream  {}{}\n", busText(*entry.device.upstreamBus),
                           runsText(entry.upstream));
    std::vector<TableRow> rows;
    for (std::size_t i = 0; i < entry.device.ports.size(); ++i) {
        const ListedPort& port = entry.device.ports[i];
        if (!degradedOnly || entry.ports[i].link.isDegraded())
            rows.push_back({"  port", port.label, portText(port, entry.ports[i])});
    }
    for (const std::string& line : tableLines(rows))
        out += fmt::format("{}\n", line);
    return out;
}

std::vector<std::string> linesOf(std::vector<TableRow> rows, const std::vector<ColumnCut>& cutFirst,
                                 const ListingForm& form) {
    return form.verbose ? tableLines(std::move(rows))
                        : tableLines(std::move(rows), cutFirst, form.width);
}

} // namespace

std::string listingAsTable(const Listing& listing, const ListingForm& form) {
    if (listing.devices.empty())
        return {};
    std::vector<TableRow> rows{{"NAME", "MODEL", "ADDRESS", "CATEGORY", "PORTS"}};
    for (const ListingEntry& entry : listing.devices)
        rows.push_back({markedName(entry.device), entry.device.model, addressOf(entry.device),
                        categoryName(entry.device.category), labelsOf(entry.device)});
    // Labels first: how many there are can be told by -v; the name last.
    const auto lines = linesOf(std::move(rows), {{4, fitItems}, {1}, {0}}, form);
    std::string out = fmt::format("{}\n", lines.front());
    for (std::size_t i = 0; i < listing.devices.size(); ++i) {
        out += fmt::format("{}\n", lines[i + 1]);
        if (form.verbose || form.degradedOnly)
            out += linkLines(listing.devices[i], form.degradedOnly);
    }
    return out;
}

std::string absentAsTable(const Listing& listing, const ListingForm& form) {
    if (listing.absent.empty())
        return {};
    std::vector<TableRow> rows{{"ABSENT", "MODEL", "STOOD AT", "BELOW"}};
    for (const ListingAbsence& absence : listing.absent)
        rows.push_back({absence.device.name, absence.device.model, absence.device.slotPath,
                        absence.place.empty() ? "-" : absence.place});
    std::string out;
    for (const std::string& line : linesOf(std::move(rows), {{1}, {2}, {0}}, form))
        out += fmt::format("{}\n", line);
    return out;
}

} // namespace tavctl
