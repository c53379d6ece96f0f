#include "tavctl/draw/functionTexts.h"

#include "tavctl/bus/busAddress.h"
#include "tavctl/draw/dotText.h"
#include "tavctl/draw/textLines.h"
#include "tavctl/words/printable.h"
#include "tavctl/words/textTable.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <vector>

namespace tavctl {

namespace {

using pcibus::PciFunction;
using Kind = PortContent::Kind;

// Attributes of the font; empty: the usual one.
const char* fontOf(Kind kind) {
    switch (kind) {
    case Kind::missing:
        return "COLOR=\"#b45309\"";
    case Kind::unknown:
    case Kind::empty:
        return "COLOR=\"#9ca3af\"";
    case Kind::devices:
        return "COLOR=\"#1d4ed8\"";
    case Kind::functions:
        break;
    }
    return "";
}

std::string coloured(Kind kind, std::string_view text) {
    const std::string_view font = fontOf(kind);
    return font.empty() ? markupText(text) : fontText(font, text);
}

PortContent devicesContent(const BusTreeView& view, const std::vector<std::size_t>& devices) {
    std::vector<std::string> names;
    std::vector<std::string> lines;
    for (const std::size_t i : devices) {
        names.push_back(markedName(view.devices()[i].listed));
        lines.push_back(fullTextOf(view, i));
    }
    return {Kind::devices, separated(names, ", "), {}, separated(lines, "\n")};
}

PortContent functionsContent(const BusTreeView& view, const PciNames& names,
                             std::span<const PciFunction> functions) {
    PortContent content{Kind::functions, shortNameOf(names, functions.front()), {}, {}};
    if (functions.size() > 1)
        content.more = fmt::format(" +{}", functions.size() - 1);
    std::vector<std::string> lines;
    for (const PciFunction& function : functions)
        lines.push_back(fullTextOf(view, names, function));
    content.whole = separated(lines, "\n");
    return content;
}

} // namespace

std::string shortNameOf(const PciNames& names, const PciFunction& function) {
    std::string text = names.device(function.vendorId, function.deviceId);
    return text.empty() ? names.function(function.vendorId, function.deviceId) : text;
}

std::string addressIn(const BusTreeView& view, const PciFunction& function) {
    return shortAddress(view.domain().number(), function);
}

std::string fullTextOf(const BusTreeView& view, const PciNames& names,
                       const PciFunction& function) {
    return fmt::format("{} {}", addressIn(view, function),
                       names.function(function.vendorId, function.deviceId));
}

std::string fullTextOf(const BusTreeView& view, std::size_t device) {
    const PlacedDevice& placed = view.devices()[device];
    const PciFunction* const function =
        placed.reported ? view.bus().find(*placed.reported) : nullptr;
    const std::string place =
        function == nullptr ? std::string() : fmt::format(" ({})", pcibus::addressText(*function));
    return fmt::format("{}: {}{}", markedName(placed.listed), placed.listed.model, place);
}

PortContent contentOf(const BusTreeView& view, const PciNames& names, const Placement& placement,
                      std::size_t device, std::size_t port) {
    const PlacedPort& placed = view.devices()[device].ports[port];
    if (placed.missing)
        return {Kind::missing, "missing", {}, "described, and not there"};
    if (const auto devices = devicesIn(placement, device, port); !devices.empty())
        return devicesContent(view, devices);
    const PciFunction* const bridge = placed.bridge ? view.bus().find(*placed.bridge) : nullptr;
    if (bridge == nullptr)
        return {Kind::unknown, "unknown", {}, "its place cannot be told"};
    const auto below = view.below(*bridge);
    return below.empty() ? PortContent{Kind::empty, "empty", {}, {}}
                         : functionsContent(view, names, below);
}

std::string contentMarkup(const PortContent& content, std::size_t width) {
    const std::size_t room = width - std::min(width, content.more.size());
    return coloured(content.kind, fitText(printable(content.text), room) + content.more);
}

std::string contentLinesMarkup(const PortContent& content, std::size_t width) {
    constexpr std::size_t kLines = 2;
    const std::size_t room = width - std::min(width, content.more.size());
    std::vector<std::string> lines = fittedLines(printable(content.text), room, kLines);
    lines.back() += content.more;
    for (std::string& line : lines)
        line = coloured(content.kind, line);
    return separated(lines, "<BR/>");
}

} // namespace tavctl
