// Models without description files: a table of them that answers as the model database does, and a
// builder that expands a model as the loader does.
#pragma once

#include "source/iPciModelInfoDb.h"
#include "tests/support/busBuilder.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <string>
#include <vector>

namespace testsupport {

// The table is empty until LoadDescriptions, as the model database is.
class ModelTable : public nZoTavManagerPciPlugin_15_0::iPciModelInfoDb {
public:
    using tModelDescription = nZoTavManagerPciPlugin_15_0::tModelDescription;
    using tAnchorIdentity = nZoTavManagerPciPlugin_15_0::tAnchorIdentity;
    using tBridgeDescription = nZoTavManagerPciPlugin_15_0::tBridgeDescription;
    using eDeviceCategory = nZoTavManagerPciPlugin_15_0::eDeviceCategory;

    // Raises std::logic_error for a model that no description file can give.
    explicit ModelTable(std::vector<tModelDescription> models = {});

    // For tests of what comes after loading: the models are there at once.
    static ModelTable loaded(std::vector<tModelDescription> models);

    // Called first in LoadDescriptions; may raise.
    std::function<void()> onLoad;
    // Called with the name of each query of a model and its index; may raise.
    std::function<void(const std::string&, std::uint32_t)> onQuery;

    [[nodiscard]] std::size_t loads() const { return loads_; }

    // One more model, at once.
    void append(tModelDescription model);

    void LoadDescriptions(nZoTavManagerPciPlugin_15_0::iPciTavFilesystem& filesystem) override;
    [[nodiscard]] std::uint32_t GetModelCount() const override;
    [[nodiscard]] const tModelDescription& GetModel(std::uint32_t index) const override;
    [[nodiscard]] eDeviceCategory GetDeviceCategory(std::uint32_t index) const override;
    void GetAnchors(std::uint32_t index, std::vector<tAnchorIdentity>& anchors) const override;
    void GetAllBridges(std::uint32_t index,
                       std::vector<tBridgeDescription>& bridges) const override;
    void GetDownstreamPorts(std::uint32_t index,
                            std::vector<tBridgeDescription>& ports) const override;
    void GetUpstreamPort(std::uint32_t index, tBridgeDescription& port) const override;
    void GetConnectorLabels(std::uint32_t index, std::list<std::string>& labels) const override;
    void GetLinkWidthPerLabel(std::uint32_t index, std::int32_t& width) const override;
    [[nodiscard]] bool HasLinkWidthPerLabel(std::uint32_t index) const override;
    [[nodiscard]] const std::string& GetTerminalNameBase(std::uint32_t index) const override;

private:
    const tModelDescription& query(const char* name, std::uint32_t index) const;

    std::vector<tModelDescription> described_;
    std::vector<tModelDescription> models_;
    std::size_t loads_ = 0;
};

// One described bridge, as a section of a description file gives it.
struct Described {
    std::string map;
    Ids ids;
    bool optional = false;
    bool reportAddress = false;
};

// Describes a model. With several anchors every internal bridge and downstream port stands once for
// each anchor, with the identifiers of that anchor.
class ModelBuilder {
public:
    static constexpr std::uint32_t kDevice = 0; // header types
    static constexpr std::uint32_t kBridge = 1;

    explicit ModelBuilder(std::string model);

    // The first is the primary anchor, the others are its alternates.
    ModelBuilder& anchor(Ids ids, std::uint32_t headerType = kBridge);
    ModelBuilder& internalBridge(Described bridge);
    ModelBuilder& downstreamPort(Described port);
    ModelBuilder& upstreamPort(const Described& port);
    ModelBuilder& labels(std::list<std::string> labels);
    ModelBuilder& linkWidthPerLabel(std::int32_t width);
    ModelBuilder& category(nZoTavManagerPciPlugin_15_0::eDeviceCategory category);
    ModelBuilder& terminalNameBase(std::string base);

    [[nodiscard]] nZoTavManagerPciPlugin_15_0::tModelDescription build() const;

private:
    nZoTavManagerPciPlugin_15_0::tModelDescription model_;
    std::vector<Described> internalBridges_;
    std::vector<Described> downstreamPorts_;
};

} // namespace testsupport
