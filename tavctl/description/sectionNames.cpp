#include "tavctl/description/sectionNames.h"

#include "source/descriptionLoader.h"

#include <algorithm>
#include <utility>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nDescription;

std::string itemOf(const std::vector<std::string>& items, std::size_t index) {
    return items.empty() ? std::string() : items[index % items.size()];
}

} // namespace

SectionNames::SectionNames(const GatheringIniFile& reads)
    : alternateAnchors_(reads.list(kSectionAnchor, kAlternateAnchors)),
      downstreamPorts_(reads.list(kSectionModel, kDownstreamPorts)),
      internalBridges_(reads.list(kSectionModel, kInternalBridges)),
      hasUpstreamPort_(reads.asked().contains({kSectionUpstreamPort, kVid}) ||
                       reads.asked().contains({kSectionUpstreamPort, kTraversalMapFromAnchor})) {}

std::string SectionNames::anchor(std::size_t anchor) const {
    return anchor == 0 ? kSectionAnchor
                       : kPrefixAlternateAnchor + itemOf(alternateAnchors_, anchor - 1);
}

std::string SectionNames::downstreamPort(std::size_t port) const {
    return kPrefixDownstreamPort + itemOf(downstreamPorts_, port);
}

std::string SectionNames::internalBridge(std::size_t bridge) const {
    return kPrefixInternalBridge + itemOf(internalBridges_, bridge);
}

std::vector<std::string> SectionNames::bridges() const {
    std::vector<std::string> sections;
    const auto add = [&](std::string section) {
        if (std::find(sections.begin(), sections.end(), section) == sections.end())
            sections.push_back(std::move(section));
    };
    for (const std::string& name : downstreamPorts_)
        add(kPrefixDownstreamPort + name);
    for (const std::string& name : internalBridges_)
        add(kPrefixInternalBridge + name);
    if (hasUpstreamPort_)
        add(kSectionUpstreamPort);
    return sections;
}

} // namespace tavctl::lint
