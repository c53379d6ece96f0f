// Where the functions of a box stand that a description is of, as far as it says; the rest is
// chosen so that nothing described falls together.
#pragma once

#include "tavctl/mock/boxModel.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tavctl::mock {

// From the bus that the box is plugged into: a hop (device << 3 | function) for each level.
using Way = std::vector<std::uint8_t>;

struct BoxPart {
    std::optional<tPciIds> ids; // none: nobody describes it
    bool isBridge = false;
};

struct BoxShape {
    std::map<Way, BoxPart> parts; // by where they stand, each with those above it
    Way anchor;
    std::optional<Way> upstreamPort;
    std::optional<Way> reported;           // where it is not the anchor
    std::vector<std::optional<Way>> ports; // as described; none for one that is missing
    std::vector<DescribedBridge>
        described; // likewise, with the upstream port and the internal ones
};

// `missing` are sections of bridges that are not there, with all that stands below them. Nothing
// when a map cannot be read.
std::optional<BoxShape> shapeOf(const BoxModel& model, std::size_t anchor,
                                const std::set<std::string>& missing);

} // namespace tavctl::mock
