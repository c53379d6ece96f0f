#include "tavctl/lint/sharedTrees.h"

#include "tavctl/description/modelShape.h"
#include "tavctl/lint/modelTree.h"

#include <algorithm>
#include <set>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;

std::uint64_t numberOf(const tPciIds& ids) {
    return std::uint64_t{ids.vendor} << 48 | std::uint64_t{ids.device} << 32 |
           std::uint64_t{ids.subsystemVendor} << 16 | ids.subsystem;
}

std::set<std::pair<std::uint64_t, bool>> anchorKeys(const tModelDescription& model) {
    std::set<std::pair<std::uint64_t, bool>> keys;
    for (const tAnchorIdentity& anchor : model.anchors)
        keys.emplace(numberOf(anchor.ids), anchor.headerType == kHeaderTypeBridge);
    return keys;
}

} // namespace

std::optional<std::size_t> SharedTrees::add(const tModelDescription& model) {
    const std::size_t number = models_++;
    const auto [known, isNew] =
        numbers_.try_emplace(shapeOf(model), static_cast<ShapeNumber>(shapes_.size()));
    std::optional<ShapeNumber> partner;
    if (isNew) {
        Shape shape;
        shape.key = &known->first;
        shape.firstModel = number;
        findPartner(shape, model);
        partner = shape.partner;
        shapes_.push_back(shape);
        for (const AnchorKey& key : anchorKeys(model))
            byAnchor_[key].push_back(known->second);
    } else {
        Shape& shape = shapes_[known->second];
        findPartner(shape, model);
        partner = shape.partner;
    }
    return partner ? std::optional(shapes_[*partner].firstModel) : std::nullopt;
}

// Those with an anchor in common, ascending.
std::vector<SharedTrees::ShapeNumber> SharedTrees::candidates(const tModelDescription& model,
                                                              std::size_t from) const {
    std::vector<ShapeNumber> found;
    for (const AnchorKey& key : anchorKeys(model)) {
        const auto alike = byAnchor_.find(key);
        if (alike == byAnchor_.end())
            continue;
        const auto first = std::lower_bound(alike->second.begin(), alike->second.end(), from);
        found.insert(found.end(), first, alike->second.end());
    }
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

// Once there is one it stays: later models are behind it.
void SharedTrees::findPartner(Shape& shape, const tModelDescription& model) {
    if (shape.partner || shape.shapesTried == shapes_.size())
        return;
    for (const ShapeNumber other : candidates(model, shape.shapesTried)) {
        ++comparisons_;
        if (satisfiedByOneTree(modelOfShape(*shapes_[other].key), model)) {
            shape.partner = other;
            return;
        }
    }
    shape.shapesTried = shapes_.size();
}

} // namespace tavctl::lint
