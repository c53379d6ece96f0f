// Whether the model as a whole can match anything: the count of the anchor search, and the labels.
#include "source/anchorSearch.h"
#include "source/descriptionLoader.h"
#include "source/modelList.h"
#include "tavctl/lint/checks.h"
#include "tavctl/lint/mapPlace.h"
#include "tavctl/lint/ownIds.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <initializer_list>
#include <set>
#include <string_view>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using namespace nDescription;

// The widest link that PCI Express knows.
constexpr std::size_t kWidestLink = 32;

class MatchingCheck {
public:
    MatchingCheck(const Description& description, Findings& findings)
        : description_(description), text_(description.text()), model_(description.model()),
          models_({model_}), findings_(findings) {}

    void check() {
        if (isRead({kVid, kPid, kSsVid, kSsPid, kPciHeaderType, kIDsSameAs, kAlternateAnchors,
                    kInternalBridges, kDownstreamPorts, kHasUpstreamPort, kTraversalMapFromAnchor,
                    kIsOptional}))
            checkCounts();
        if (isRead({kConnectorLabels, kLinkWidthPerLabel, kDownstreamPorts, kHasUpstreamPort,
                    kAlternateAnchors}))
            checkLabels();
    }

private:
    // Whether nothing kept these keys from being read; what was not read cannot be judged.
    [[nodiscard]] bool isRead(std::initializer_list<std::string_view> keys) const {
        const auto& problems = description_.reads().problems();
        return std::none_of(problems.begin(), problems.end(), [&](const LoadProblem& problem) {
            return problem.kind == LoadProblem::Kind::cannotOpen ||
                   std::find(keys.begin(), keys.end(), problem.key) != keys.end();
        });
    }

    void checkCounts() {
        for (std::size_t i = 0; i < model_.anchors.size(); ++i) {
            if (model_.anchors[i].headerType == kHeaderTypeBridge)
                checkCount(i);
        }
        if (model_.anchors.size() > 1)
            checkAlternates();
    }

    // The candidate and the bridges found must come to the number of bridges described.
    void checkCount(std::size_t anchor) {
        const std::string section = description_.sections().anchor(anchor);
        std::size_t described = 0;
        bool standsForAnchor = false;
        std::set<MapPlace> places{*placeOfMap("")};
        for (const tBridgeDescription& bridge :
             descriptionsOfAnchor(model_.anchors[anchor], models_, 0)) {
            if (bridge.isOptional)
                continue;
            const auto place = placeOfMap(bridge.traversalMap);
            if (!place)
                return; // told elsewhere; nothing can be said of the count
            ++described;
            // A way that leads up and down again comes back to an anchor that stands at its end.
            standsForAnchor = standsForAnchor || place->level == 0;
            places.insert(*place);
        }
        if (!standsForAnchor)
            findings_.add("anchor-not-described", text_.header(section),
                          fmt::format("no bridge that is not optional has the identifiers of [{}] "
                                      "and TraversalMapFromAnchor = \"\", so the count never comes "
                                      "out and the model is never found",
                                      section),
                          "the upstream port or an internal bridge with IDsSameAs = Anchor and "
                          "TraversalMapFromAnchor = \"\"");
        else if (described > places.size())
            findings_.add("anchor-counted-twice", text_.header(section),
                          fmt::format("{} with the identifiers of [{}] stand in {}, so the count "
                                      "never comes out and the model is never found",
                                      counted(described, "bridge"), section,
                                      counted(places.size(), "place")),
                          "each place once; IsOptional = 1 takes a bridge out of the count");
    }

    void checkAlternates() {
        const tBridgeDescription& upstream = model_.upstreamPort;
        if (upstream.traversalMap != kNoText && !upstream.isOptional) {
            const auto same = std::count_if(
                model_.anchors.begin(), model_.anchors.end(),
                [&](const tAnchorIdentity& anchor) { return anchor.ids == upstream.ids; });
            if (same != 0 && static_cast<std::size_t>(same) != model_.anchors.size())
                findings_.add("upstream-beside-anchor", text_.header(kSectionUpstreamPort),
                              "the upstream port keeps its own identifiers, so it is counted for "
                              "the anchors that have the same ones and not for the others",
                              "IsOptional = 1, and an internal bridge that stands for the anchor");
        }
        for (std::size_t i = 0; i < description_.list(kSectionModel, kInternalBridges).size(); ++i)
            checkMixed(description_.sections().internalBridge(i), model_.internalBridges[i]);
        for (std::size_t i = 0; i < description_.list(kSectionModel, kDownstreamPorts).size(); ++i)
            checkMixed(description_.sections().downstreamPort(i), model_.downstreamPorts[i]);
    }

    // With alternate anchors the identifiers in a bridge's own section are not what is looked for.
    void checkMixed(const std::string& section, const tBridgeDescription& bridge) {
        const bool counts = std::any_of(
            model_.anchors.begin(), model_.anchors.end(),
            [](const tAnchorIdentity& each) { return each.headerType == kHeaderTypeBridge; });
        const auto own = ownIdsOf(description_, section);
        const bool isAnchors =
            std::any_of(model_.anchors.begin(), model_.anchors.end(),
                        [&](const tAnchorIdentity& each) { return each.ids == own; });
        if (counts && !bridge.isOptional && !isAnchors && mixed_.insert(section).second)
            findings_.add("mixed-bridges", text_.header(section),
                          fmt::format("with alternate anchors [{}] is looked for with the anchor's "
                                      "identifiers, not with its own",
                                      section),
                          "IsOptional = 1 for a bridge that has other identifiers than the anchor");
    }

    void checkLabels() {
        const bool hasUpstream = model_.upstreamPort.traversalMap != kNoText;
        const std::size_t labels = model_.connectorLabels.size();
        const std::size_t listed = description_.list(kSectionModel, kDownstreamPorts).size();
        // What a port can take at most. The width divides as an unsigned number.
        const auto perLabel = static_cast<std::uint32_t>(model_.linkWidthPerLabel);
        const std::size_t each = perLabel == 0 ? 1 : kWidestLink / perLabel;
        const std::size_t upstream = hasUpstream ? each : 0;
        const std::size_t most = upstream + each * model_.downstreamPorts.size();
        if (labels > most) {
            tooManyLabels(most, each);
        } else if (perLabel == 0 && hasUpstream && labels == 0) {
            findings_.add("too-few-labels", text_.value(kSectionModel, kConnectorLabels),
                          "the upstream port takes the first label, and there is none",
                          "the upstream port's label first, then those of the downstream ports");
        } else if (labels > upstream + each * listed) {
            findings_.add("labels-repeat-ports",
                          text_.item(kSectionModel, kConnectorLabels, upstream + each * listed),
                          "with alternate anchors the ports are gone through once for each "
                          "anchor: this label goes to the first port again",
                          fmt::format("{} at most", counted(upstream + each * listed, "label")));
        } else if (perLabel == 0) {
            checkFewer(labels, upstream, listed);
        }
    }

    void tooManyLabels(std::size_t most, std::size_t each) {
        std::string found = fmt::format("{}, but the ports take {}: the model is never listed",
                                        counted(model_.connectorLabels.size(), "label"),
                                        most == 0 ? "none" : fmt::format("at most {}", most));
        if (each == 0)
            found += ". No link is as wide as LinkWidthPerLabel";
        findings_.add("too-many-labels", text_.item(kSectionModel, kConnectorLabels, most),
                      std::move(found),
                      "one label for the upstream port, if there is one, and one for each "
                      "downstream port; with LinkWidthPerLabel one for each so many lanes");
    }

    void checkFewer(std::size_t labels, std::size_t upstream, std::size_t listed) {
        std::size_t certain = 0;
        for (std::size_t i = 0; i < listed; ++i)
            certain += model_.downstreamPorts[i].isOptional ? 0U : 1U;
        if (labels < upstream + certain)
            findings_.add(
                "fewer-labels-than-ports", text_.value(kSectionModel, kConnectorLabels),
                fmt::format("{} for {}: the ports behind the last label are not looked at",
                            counted(labels, "label"), counted(upstream + certain, "port")),
                "a label for each port; IsOptional = 1 for a port that may be missing");
    }

    const Description& description_;
    const PositionedIni& text_;
    const tModelDescription& model_;
    ModelList models_;
    Findings& findings_;
    std::set<std::string> mixed_;
};

} // namespace

void checkMatching(const Description& description, Findings& findings) {
    MatchingCheck(description, findings).check();
}

} // namespace tavctl::lint
