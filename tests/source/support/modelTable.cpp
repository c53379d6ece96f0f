#include "tests/source/support/modelTable.h"

#include "tests/source/support/recordingBridgeWrapper.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace testsupport {

using namespace nZoTavManagerPciPlugin_15_0;

namespace {

void require(bool condition, const std::string& model, const char* what) {
    if (!condition)
        throw std::logic_error("model " + model + ": " + what);
}

// With several anchors the bridges come in groups, one for each anchor with its identifiers.
void checkGroups(const tModelDescription& model, const std::vector<tBridgeDescription>& bridges) {
    if (model.anchors.size() <= 1)
        return;
    require(bridges.size() % model.anchors.size() == 0, model.model, "groups of unequal size");
    const std::size_t group = bridges.size() / model.anchors.size();
    for (std::size_t i = 0; i < bridges.size(); ++i) {
        require(bridges[i].ids == model.anchors[i / group].ids, model.model,
                "a bridge without its anchor's identifiers");
        require(bridges[i].traversalMap == bridges[i % group].traversalMap, model.model,
                "groups that differ");
    }
}

void check(const tModelDescription& model) {
    const auto category = static_cast<std::uint32_t>(model.deviceCategory);
    require(category >= 10 && category <= 12, model.model, "unknown category");
    require(std::none_of(model.connectorLabels.begin(), model.connectorLabels.end(),
                         [](const auto& label) { return label.find(',') != std::string::npos; }),
            model.model, "a label with a comma");
    checkGroups(model, model.internalBridges);
    checkGroups(model, model.downstreamPorts);
}

tBridgeDescription descriptionOf(const Described& bridge) {
    return {bridge.map, pciIds(bridge.ids), bridge.reportAddress, bridge.optional};
}

std::vector<tBridgeDescription> onceForEachAnchor(const std::vector<Described>& bridges,
                                                  const std::vector<tAnchorIdentity>& anchors) {
    std::vector<tBridgeDescription> result;
    for (std::size_t pass = 0; pass < std::max<std::size_t>(anchors.size(), 1); ++pass) {
        for (const Described& bridge : bridges) {
            result.push_back(descriptionOf(bridge));
            if (anchors.size() > 1)
                result.back().ids = anchors[pass].ids;
        }
    }
    return result;
}

} // namespace

ModelTable::ModelTable(std::vector<tModelDescription> models) : described_(std::move(models)) {
    for (const tModelDescription& model : described_)
        check(model);
}

ModelTable ModelTable::loaded(std::vector<tModelDescription> models) {
    ModelTable table(std::move(models));
    table.models_ = table.described_;
    return table;
}

void ModelTable::append(tModelDescription model) {
    check(model);
    models_.push_back(std::move(model));
}

void ModelTable::LoadDescriptions(iPciTavFilesystem&) {
    ++loads_;
    if (onLoad)
        onLoad();
    models_ = described_;
}

const tModelDescription& ModelTable::query(const char* name, std::uint32_t index) const {
    static_cast<void>(models_.at(index));
    if (onQuery)
        onQuery(name, index); // may append models
    return models_.at(index);
}

std::uint32_t ModelTable::GetModelCount() const {
    return static_cast<std::uint32_t>(models_.size());
}

const tModelDescription& ModelTable::GetModel(std::uint32_t index) const {
    return query("GetModel", index);
}

eDeviceCategory ModelTable::GetDeviceCategory(std::uint32_t index) const {
    return query("GetDeviceCategory", index).deviceCategory;
}

void ModelTable::GetAnchors(std::uint32_t index, std::vector<tAnchorIdentity>& anchors) const {
    anchors = query("GetAnchors", index).anchors;
}

void ModelTable::GetAllBridges(std::uint32_t index,
                               std::vector<tBridgeDescription>& bridges) const {
    const tModelDescription& model = query("GetAllBridges", index);
    bridges = model.downstreamPorts;
    bridges.insert(bridges.end(), model.internalBridges.begin(), model.internalBridges.end());
    if (model.upstreamPort.traversalMap != kNoText)
        bridges.push_back(model.upstreamPort);
}

void ModelTable::GetDownstreamPorts(std::uint32_t index,
                                    std::vector<tBridgeDescription>& ports) const {
    ports = query("GetDownstreamPorts", index).downstreamPorts;
}

void ModelTable::GetUpstreamPort(std::uint32_t index, tBridgeDescription& port) const {
    port = query("GetUpstreamPort", index).upstreamPort;
}

void ModelTable::GetConnectorLabels(std::uint32_t index, std::list<std::string>& labels) const {
    labels = query("GetConnectorLabels", index).connectorLabels;
}

void ModelTable::GetLinkWidthPerLabel(std::uint32_t index, std::int32_t& width) const {
    width = query("GetLinkWidthPerLabel", index).linkWidthPerLabel;
}

bool ModelTable::HasLinkWidthPerLabel(std::uint32_t index) const {
    return query("HasLinkWidthPerLabel", index).linkWidthPerLabel != 0;
}

const std::string& ModelTable::GetTerminalNameBase(std::uint32_t index) const {
    return query("GetTerminalNameBase", index).terminalNameBase;
}

ModelBuilder::ModelBuilder(std::string model) {
    model_.model = std::move(model);
    model_.terminalNameBase = "TAV";
}

ModelBuilder& ModelBuilder::anchor(Ids ids, std::uint32_t headerType) {
    model_.anchors.push_back({headerType, pciIds(ids)});
    return *this;
}

ModelBuilder& ModelBuilder::internalBridge(Described bridge) {
    internalBridges_.push_back(std::move(bridge));
    return *this;
}

ModelBuilder& ModelBuilder::downstreamPort(Described port) {
    downstreamPorts_.push_back(std::move(port));
    return *this;
}

ModelBuilder& ModelBuilder::upstreamPort(const Described& port) {
    model_.upstreamPort = descriptionOf(port);
    return *this;
}

ModelBuilder& ModelBuilder::labels(std::list<std::string> labels) {
    model_.connectorLabels = std::move(labels);
    return *this;
}

ModelBuilder& ModelBuilder::linkWidthPerLabel(std::int32_t width) {
    model_.linkWidthPerLabel = width;
    return *this;
}

ModelBuilder& ModelBuilder::category(eDeviceCategory category) {
    model_.deviceCategory = category;
    return *this;
}

ModelBuilder& ModelBuilder::terminalNameBase(std::string base) {
    model_.terminalNameBase = std::move(base);
    return *this;
}

tModelDescription ModelBuilder::build() const {
    tModelDescription model = model_;
    model.internalBridges = onceForEachAnchor(internalBridges_, model.anchors);
    model.downstreamPorts = onceForEachAnchor(downstreamPorts_, model.anchors);
    check(model);
    return model;
}

} // namespace testsupport
