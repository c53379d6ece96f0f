// Traversal maps, step by step, as the plug-in takes them.
#include "pcibus/pciFunction.h"
#include "pxidrivertools/scan.h"
#include "source/descriptionLoader.h"
#include "tavctl/lint/checks.h"
#include "tavctl/lint/mapPlace.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <set>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using namespace nDescription;
using namespace nZoPxiDriverTools_1_0;

constexpr auto kLastDevice = static_cast<std::int32_t>(pcibus::kMaxDevice);
constexpr auto kLastFunction = static_cast<std::int32_t>(pcibus::kMaxFunction);

class MapCheck {
public:
    MapCheck(const Description& description, Findings& findings)
        : description_(description), findings_(findings) {}

    void check() {
        const tModelDescription& model = description_.model();
        for (std::size_t i = 0; i < model.downstreamPorts.size(); ++i)
            checkBridge(description_.sections().downstreamPort(i), model.downstreamPorts[i]);
        for (std::size_t i = 0; i < model.internalBridges.size(); ++i)
            checkBridge(description_.sections().internalBridge(i), model.internalBridges[i]);
        if (model.upstreamPort.traversalMap != kNoText)
            checkBridge(kSectionUpstreamPort, model.upstreamPort);
    }

private:
    void checkBridge(const std::string& section, const tBridgeDescription& bridge) {
        if (description_.text().linesOf(section, kTraversalMapFromAnchor).empty() ||
            !checked_.insert(section).second)
            return;
        const std::string_view map = bridge.traversalMap;
        for (std::size_t start = 0;;) {
            const std::size_t comma = std::min(map.find(',', start), map.size());
            if (!placeOfMap(map.substr(0, comma)) || (comma == 0 && !map.empty())) {
                badStep(section, map, start, comma);
                return;
            }
            checkNumbers(section, map, start, comma);
            if (comma == map.size())
                return;
            start = comma + 1;
        }
    }

    [[nodiscard]] Place place(const std::string& section, std::size_t start,
                              std::size_t end) const {
        return description_.text().part(section, kTraversalMapFromAnchor, start, end - start);
    }

    void badStep(const std::string& section, std::string_view map, std::size_t start,
                 std::size_t end) {
        findings_.add("bad-traversal-map", place(section, start, end),
                      start == end
                          ? std::string("a step is empty")
                          : fmt::format("{} is no step", inQuotes(map.substr(start, end - start))),
                      "steps like d2f0 (down), - (up) or f1 (across), with commas and no blanks "
                      "between; \"\" stays at the anchor");
    }

    void checkNumbers(const std::string& section, std::string_view map, std::size_t start,
                      std::size_t end) {
        std::string_view step = map.substr(start, end - start);
        bool fits = true;
        if (scanCharacter(step, 'd'))
            fits = within(scanSigned(step), kLastDevice);
        if (scanCharacter(step, 'f'))
            fits = within(scanSigned(step), kLastFunction) && fits;
        if (!fits)
            findings_.add("map-number", place(section, start, end),
                          fmt::format("{} names a place that no PCI function has",
                                      inQuotes(map.substr(start, end - start))),
                          "decimal numbers: a device from 0 to 31, a function from 0 to 7");
    }

    static bool within(const std::optional<std::int32_t>& number, std::int32_t last) {
        return number && *number >= 0 && *number <= last;
    }

    const Description& description_;
    Findings& findings_;
    std::set<std::string> checked_;
};

} // namespace

void checkMaps(const Description& description, Findings& findings) {
    MapCheck(description, findings).check();
}

} // namespace tavctl::lint
