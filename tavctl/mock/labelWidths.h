// How wide the links of a box are for its labels to come out even.
#pragma once

#include "source/modelDescription.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavctl::mock {

// The lanes that a link is wished to have, 0 for any, of a bridge that is there; none for one that
// is missing.
using WidthWish = std::optional<std::uint8_t>;

struct LabelWidths {
    std::uint8_t upstreamPort = 1;
    std::vector<std::uint8_t> ports; // in the order of the description; 0 of a missing one
    struct Label {
        std::size_t port;
        std::string label;
    };
    std::vector<Label> labels; // as they are listed
};

// A bridge that takes labels: the upstream port or a downstream port.
struct LabelTaker {
    WidthWish wish;
    std::size_t sameAs; // the first one that stands in the same place, itself mostly
};

// Widths by which every label is taken. Of a model without lanes per label every link has one lane
// where nothing else is wished for. Where there is a choice, labels that differ in nothing but a
// number at their end are of one port ("A1,B1,B2"), else the ports are as equal as they can be.
// Bridges that stand in one place have one width. The upstream port comes first of `takers`, if the
// model has one. Nothing when there are no such widths.
std::optional<LabelWidths>
widthsForLabels(const nZoTavManagerPciPlugin_15_0::tModelDescription& model,
                const std::vector<LabelTaker>& takers);

} // namespace tavctl::mock
