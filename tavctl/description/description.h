// One description file as lint, explain and describe know it: what the loader made of it, and where
// everything stands in the file.
#pragma once

#include "source/modelDescription.h"
#include "tavctl/description/gatheringIniFile.h"
#include "tavctl/description/positionedIni.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace tavctl::lint {

using nZoTavManagerPciPlugin_15_0::tAnchorIdentity;
using nZoTavManagerPciPlugin_15_0::tBridgeDescription;
using nZoTavManagerPciPlugin_15_0::tModelDescription;

class Description {
public:
    // Reads the file with the plug-in's loader, which goes on where it would end.
    explicit Description(std::string path);

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] const PositionedIni& text() const { return *text_; }
    [[nodiscard]] const GatheringIniFile& reads() const { return *reads_; }

    // With stand-ins for what could not be read: 0, no items, an empty text.
    [[nodiscard]] const tModelDescription& model() const { return model_; }

    // Whether the plug-in loads it.
    [[nodiscard]] bool loads() const { return reads_->problems().empty(); }

    // The system's words for why the file cannot be opened; empty when it can be.
    [[nodiscard]] const std::string& openingTrouble() const { return openingTrouble_; }

    // Whether the file starts with the mark of an encoding that is refused.
    [[nodiscard]] bool isWide() const { return wide_; }

    // The items of a list as they were read; none when it was not.
    [[nodiscard]] const std::vector<std::string>& list(const std::string& section,
                                                       const std::string& key) const;

    // Sections in the order of the model's lists. With alternate anchors the lists of bridges begin
    // again for each anchor, and so do these.
    [[nodiscard]] std::string anchorSection(std::size_t anchor) const;
    [[nodiscard]] std::string downstreamPortSection(std::size_t port) const;
    [[nodiscard]] std::string internalBridgeSection(std::size_t bridge) const;

    // The sections of all bridges, each once: downstream ports, internal bridges, upstream port.
    [[nodiscard]] std::vector<std::string> bridgeSections() const;

private:
    std::string path_;
    std::unique_ptr<PositionedIni> text_;
    std::unique_ptr<GatheringIniFile> reads_;
    tModelDescription model_;
    std::string openingTrouble_;
    bool wide_ = false;
};

} // namespace tavctl::lint
