// The model database over an INI file class.
#pragma once

#include "pxidrivertools/cIniFile.h"
#include "source/descriptionLoader.h"
#include "source/iPciModelInfoDb.h"

namespace nZoTavManagerPciPlugin_15_0 {

template <typename tIniFile>
class cPciModelInfoDbTemplated : public iPciModelInfoDb {
public:
    void LoadDescriptions(iPciTavFilesystem& filesystem) override {
        if (!models_.empty())
            return;
        std::vector<std::string> files;
        filesystem.ListFiles(filesystem.GetDescriptionFilePattern(), files);
        for (const std::string& path : files) {
            tIniFile file;
            models_.push_back(DescriptionLoader<tIniFile>(file).load(path));
        }
    }

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

private:
    std::vector<tModelDescription> models_;
};

using cPciModelInfoDb = cPciModelInfoDbTemplated<nZoPxiDriverTools_1_0::cIniFile>;
extern template class cPciModelInfoDbTemplated<nZoPxiDriverTools_1_0::cIniFile>;

// The one database of the process; loaded by the first build of the device cache and never again.
iPciModelInfoDb& modelDatabase();

} // namespace nZoTavManagerPciPlugin_15_0
