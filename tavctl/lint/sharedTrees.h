// Tells models apart that one piece of hardware can be taken for at once, among so many that each
// cannot be compared with each.
#pragma once

#include "source/modelDescription.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tavctl::lint {

// Only models with an anchor in common can be satisfied by one tree, and names make no difference
// to that. So models that are the same but for their names are one shape, of which only the first
// is compared with other shapes.
class SharedTrees {
public:
    using tModelDescription = nZoTavManagerPciPlugin_15_0::tModelDescription;

    // Numbers the models from 0. The number of the first model added before that is satisfied by
    // one tree with this one, as satisfiedByOneTree(that, this) says.
    std::optional<std::size_t> add(const tModelDescription& model);

    // How many pairs had to be tried.
    [[nodiscard]] std::size_t comparisons() const { return comparisons_; }

private:
    // By a number of its own, in the order of the first models.
    using ShapeNumber = std::uint32_t;
    struct Shape {
        const std::string* key = nullptr;
        std::size_t firstModel = 0;
        std::size_t shapesTried = 0; // the shapes below this number
        std::optional<ShapeNumber> partner;
    };
    // Identifiers, and whether it is a bridge.
    using AnchorKey = std::pair<std::uint64_t, bool>;

    [[nodiscard]] std::vector<ShapeNumber> candidates(const tModelDescription& model,
                                                      std::size_t from) const;
    void findPartner(Shape& shape, const tModelDescription& model);

    std::size_t models_ = 0;
    std::size_t comparisons_ = 0;
    std::unordered_map<std::string, ShapeNumber> numbers_;
    std::vector<Shape> shapes_;
    std::map<AnchorKey, std::vector<ShapeNumber>> byAnchor_; // ascending
};

} // namespace tavctl::lint
