// Models in memory and the queries on them. The model database adds the loading of files; a host
// that has models from elsewhere uses the list as it is.
#pragma once

#include "source/iPciModelInfoDb.h"

#include <utility>

namespace nZoTavManagerPciPlugin_15_0 {

class ModelList : public iPciModelInfoDb {
public:
    ModelList() = default;
    explicit ModelList(std::vector<tModelDescription> models) : models_(std::move(models)) {}

    // There is nothing to load.
    void LoadDescriptions(iPciTavFilesystem&) override {}

    [[nodiscard]] std::uint32_t GetModelCount() const override {
        return static_cast<std::uint32_t>(models_.size());
    }

    [[nodiscard]] const tModelDescription& GetModel(std::uint32_t index) const override {
        return models_.at(index);
    }

    [[nodiscard]] eDeviceCategory GetDeviceCategory(std::uint32_t index) const override {
        return models_.at(index).deviceCategory;
    }

    void GetAnchors(std::uint32_t index, std::vector<tAnchorIdentity>& anchors) const override {
        anchors = models_.at(index).anchors;
    }

    void GetAllBridges(std::uint32_t index,
                       std::vector<tBridgeDescription>& bridges) const override {
        GetDownstreamPorts(index, bridges);
        const tModelDescription& model = models_.at(index);
        bridges.insert(bridges.end(), model.internalBridges.begin(), model.internalBridges.end());
        if (model.upstreamPort.traversalMap != kNoText)
            bridges.push_back(model.upstreamPort);
    }

    void GetDownstreamPorts(std::uint32_t index,
                            std::vector<tBridgeDescription>& ports) const override {
        ports = models_.at(index).downstreamPorts;
    }

    void GetUpstreamPort(std::uint32_t index, tBridgeDescription& port) const override {
        port = models_.at(index).upstreamPort;
    }

    void GetConnectorLabels(std::uint32_t index, std::list<std::string>& labels) const override {
        labels = models_.at(index).connectorLabels;
    }

    void GetLinkWidthPerLabel(std::uint32_t index, std::int32_t& width) const override {
        width = models_.at(index).linkWidthPerLabel;
    }

    [[nodiscard]] bool HasLinkWidthPerLabel(std::uint32_t index) const override {
        return models_.at(index).linkWidthPerLabel != 0;
    }

    [[nodiscard]] const std::string& GetTerminalNameBase(std::uint32_t index) const override {
        return models_.at(index).terminalNameBase;
    }

protected:
    std::vector<tModelDescription> models_;
};

} // namespace nZoTavManagerPciPlugin_15_0
