// Whether two of the described bridges are one and the same, told by where their maps lead.
#include "source/descriptionLoader.h"
#include "tavctl/lint/checks.h"
#include "tavctl/lint/mapPlace.h"
#include "tavctl/lint/ownIds.h"

#include <fmt/core.h>

#include <map>
#include <set>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using namespace nDescription;

class PlaceCheck {
public:
    PlaceCheck(const Description& description, Findings& findings)
        : description_(description), findings_(findings) {}

    void check() {
        const tModelDescription& model = description_.model();
        if (model.upstreamPort.traversalMap != kNoText)
            checkConnector(kSectionUpstreamPort, model.upstreamPort);
        const std::size_t ports = description_.list(kSectionModel, kDownstreamPorts).size();
        for (std::size_t i = 0; i < ports; ++i)
            checkConnector(description_.sections().downstreamPort(i), model.downstreamPorts[i]);
        const std::size_t internal = description_.list(kSectionModel, kInternalBridges).size();
        for (std::size_t i = 0; i < internal; ++i)
            checkInternal(description_.sections().internalBridge(i), model.internalBridges[i]);
    }

private:
    struct Standing {
        std::string connector; // the first section of a port that stands here
        bool isOptional = false;
        std::map<std::uint64_t, std::string> internal; // by their identifiers
    };

    // Null for a section that was looked at already, and for a map that is not there or cannot be
    // read: others tell that.
    Standing* standingOf(const std::string& section, const tBridgeDescription& bridge) {
        if (description_.text().linesOf(section, kTraversalMapFromAnchor).empty() ||
            !checked_.insert(section).second)
            return nullptr;
        const auto place = placeOfMap(bridge.traversalMap);
        return place ? &standing_[*place] : nullptr;
    }

    void checkConnector(const std::string& section, const tBridgeDescription& bridge) {
        Standing* const here = standingOf(section, bridge);
        if (here == nullptr)
            return;
        if (here->connector.empty()) {
            here->connector = section;
            here->isOptional = bridge.isOptional;
        } else {
            report(section, here->connector, "one port would take the labels of both");
        }
    }

    // A bridge with other identifiers is what may stand there instead.
    void checkInternal(const std::string& section, const tBridgeDescription& bridge) {
        Standing* const here = standingOf(section, bridge);
        const auto ids = ownIdsOf(description_, section);
        if (here == nullptr || !ids)
            return;
        const auto [first, isNew] = here->internal.emplace(ids->packed(), section);
        if (!isNew)
            report(section, first->second, "it is one bridge, described twice");
        else if (!here->connector.empty() && !standsForUpstreamPort(*here, bridge) &&
                 ownIdsOf(description_, here->connector) == ids)
            report(section, here->connector, "it is one bridge, described twice");
    }

    // An internal bridge is what the search counts in the place of an upstream port that it leaves
    // out, or the other way round.
    static bool standsForUpstreamPort(const Standing& here, const tBridgeDescription& bridge) {
        return here.connector == kSectionUpstreamPort && (here.isOptional || bridge.isOptional);
    }

    void report(const std::string& section, const std::string& first, const char* consequence) {
        findings_.add("same-place", description_.text().value(section, kTraversalMapFromAnchor),
                      fmt::format("this leads to where [{}] stands: {}", first, consequence),
                      "the way to a bridge of its own for each section");
    }

    const Description& description_;
    Findings& findings_;
    std::map<MapPlace, Standing> standing_;
    std::set<std::string> checked_;
};

} // namespace

void checkPlaces(const Description& description, Findings& findings) {
    PlaceCheck(description, findings).check();
}

} // namespace tavctl::lint
