// The models that the description files describe, asked for by their position in load order.
#pragma once

#include "source/iPciTavFilesystem.h"
#include "source/modelDescription.h"

#include <cstdint>
#include <list>
#include <string>
#include <vector>

namespace nZoTavManagerPciPlugin_15_0 {

// The order of the operations is part of the interface. Every query of a model raises
// std::out_of_range for an index that is not below GetModelCount(). Lists handed in are replaced.
class iPciModelInfoDb {
public:
    // Loads every description file, in the order of the listing, one model each. Does nothing when
    // models are loaded already. The first faulty file ends the load with a zoerr::Exception; the
    // models before it stay.
    virtual void LoadDescriptions(iPciTavFilesystem& filesystem) = 0;

    [[nodiscard]] virtual std::uint32_t GetModelCount() const = 0;
    [[nodiscard]] virtual const tModelDescription& GetModel(std::uint32_t index) const = 0;
    [[nodiscard]] virtual eDeviceCategory GetDeviceCategory(std::uint32_t index) const = 0;
    // The primary anchor first.
    virtual void GetAnchors(std::uint32_t index, std::vector<tAnchorIdentity>& anchors) const = 0;
    // The downstream ports, then the internal bridges, then the upstream port if there is one.
    virtual void GetAllBridges(std::uint32_t index,
                               std::vector<tBridgeDescription>& bridges) const = 0;
    virtual void GetDownstreamPorts(std::uint32_t index,
                                    std::vector<tBridgeDescription>& ports) const = 0;
    // The traversal map is kNoText for a model without an upstream port.
    virtual void GetUpstreamPort(std::uint32_t index, tBridgeDescription& port) const = 0;
    virtual void GetConnectorLabels(std::uint32_t index, std::list<std::string>& labels) const = 0;
    virtual void GetLinkWidthPerLabel(std::uint32_t index, std::int32_t& width) const = 0;
    [[nodiscard]] virtual bool HasLinkWidthPerLabel(std::uint32_t index) const = 0;
    [[nodiscard]] virtual const std::string& GetTerminalNameBase(std::uint32_t index) const = 0;

    virtual ~iPciModelInfoDb() = default;
};

} // namespace nZoTavManagerPciPlugin_15_0
