// How the sections are called that describe a model's parts.
#pragma once

#include "tavctl/description/gatheringIniFile.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tavctl::lint {

class SectionNames {
public:
    SectionNames() = default;
    // By what a description's loader read.
    explicit SectionNames(const GatheringIniFile& reads);

    // Sections in the order of the model's lists. With alternate anchors the lists of bridges begin
    // again for each anchor, and so do these.
    [[nodiscard]] std::string anchor(std::size_t anchor) const;
    [[nodiscard]] std::string downstreamPort(std::size_t port) const;
    [[nodiscard]] std::string internalBridge(std::size_t bridge) const;

    // The sections of all bridges, each once: downstream ports, internal bridges, upstream port.
    [[nodiscard]] std::vector<std::string> bridges() const;

private:
    // The items of the lists as they were read; none when they were not.
    std::vector<std::string> alternateAnchors_;
    std::vector<std::string> downstreamPorts_;
    std::vector<std::string> internalBridges_;
    bool hasUpstreamPort_ = false;
};

} // namespace tavctl::lint
