#include "tavctl/mock/boxModel.h"

#include "source/descriptionLoader.h"
#include "tavctl/lint/ownIds.h"

#include <utility>

namespace tavctl::mock {

using namespace nZoTavManagerPciPlugin_15_0;
using namespace nDescription;

BoxModel::BoxModel(lint::Description&& description) : file(description.path()) {
    const lint::SectionNames& sections = description.sections();
    const std::size_t ports = description.list(kSectionModel, kDownstreamPorts).size();
    const std::size_t internal = description.list(kSectionModel, kInternalBridges).size();
    const auto own = [&](const std::string& section, const tBridgeDescription& bridge) {
        return lint::ownIdsOf(description, section).value_or(bridge.ids);
    };
    for (std::size_t i = 0; i < ports; ++i) {
        portSections_.push_back(sections.downstreamPort(i));
        portIds_.push_back(own(portSections_.back(), description.model().downstreamPorts[i]));
    }
    for (std::size_t i = 0; i < internal; ++i) {
        internalSections_.push_back(sections.internalBridge(i));
        internalIds_.push_back(
            own(internalSections_.back(), description.model().internalBridges[i]));
    }
    for (std::size_t i = 0; i < description.model().anchors.size(); ++i)
        anchorSections.push_back(sections.anchor(i));
    model = description.takeModel();
}

std::vector<DescribedBridge> BoxModel::bridges(std::size_t anchor) const {
    using Kind = DescribedBridge::Kind;
    std::vector<DescribedBridge> bridges;
    const bool isBridge = model.anchors[anchor].headerType == kHeaderTypeBridge;
    const auto add = [&](Kind kind, const std::string& section, const tBridgeDescription& bridge,
                         const tPciIds& own) {
        const bool counted =
            isBridge && !bridge.isOptional && bridge.ids == model.anchors[anchor].ids;
        bridges.push_back({kind, section, bridge.traversalMap, counted ? bridge.ids : own, counted,
                           bridge.isOptional, bridge.reportAddressFromThisBridge});
    };
    if (model.upstreamPort.traversalMap != kNoText)
        add(Kind::upstreamPort, kSectionUpstreamPort, model.upstreamPort, model.upstreamPort.ids);
    for (std::size_t i = 0; i < portSections_.size(); ++i)
        add(Kind::downstreamPort, portSections_[i],
            model.downstreamPorts[anchor * portSections_.size() + i], portIds_[i]);
    for (std::size_t i = 0; i < internalSections_.size(); ++i)
        add(Kind::internalBridge, internalSections_[i],
            model.internalBridges[anchor * internalSections_.size() + i], internalIds_[i]);
    return bridges;
}

} // namespace tavctl::mock
