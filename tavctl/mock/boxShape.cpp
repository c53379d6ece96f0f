#include "tavctl/mock/boxShape.h"

#include "pxidrivertools/cSlotPath.h"

#include <algorithm>
#include <string_view>

namespace tavctl::mock {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using nZoPxiDriverTools_1_0::cSlotPath;

// More bridges above each other than there are buses.
constexpr std::size_t kDeepest = 256;

// Finds hops for the anchor and the bridges above it, of which maps tell nothing.
class Placement {
public:
    Placement(const std::vector<DescribedBridge>& bridges, std::size_t depth)
        : bridges_(bridges), above_(depth, 0) {}

    // False when a map cannot be read.
    bool choose() {
        if (!places())
            return false;
        for (std::size_t level = 0; level < above_.size(); ++level)
            chooseAt(level);
        describeAnchor();
        return true;
    }

    // The places of the bridges in their order, nearest the bridge first; hops above all of them
    // included.
    [[nodiscard]] std::vector<Way> ways() const { return places().value(); }
    [[nodiscard]] const Way& anchor() const { return above_; }

private:
    [[nodiscard]] std::optional<std::vector<Way>> places() const {
        std::vector<Way> places;
        for (const DescribedBridge& bridge : bridges_) {
            cSlotPath path;
            path.hops.assign(above_.begin(), above_.end());
            nZOQUIL000::tErrorStatus status;
            path.ApplyRelativePath(bridge.traversalMap, status);
            if (status.failed())
                return std::nullopt;
            places.emplace_back(path.hops.begin(), path.hops.end());
        }
        return places;
    }

    // How many places there are, with those of the anchor and the bridges above it.
    [[nodiscard]] std::size_t distinct() const {
        std::set<Way> all;
        std::vector<Way> ways = places().value();
        for (Way& way : ways)
            all.insert(std::move(way));
        for (std::size_t level = 0; level < above_.size(); ++level)
            all.emplace(above_.begin() + static_cast<std::ptrdiff_t>(level), above_.end());
        return all.size();
    }

    // One of the bridges that are counted must be the anchor. A way that leads up and down again
    // may come back to it, when it stands where that ends.
    void describeAnchor() {
        std::vector<Way> ways = places().value();
        bool isNeeded = false;
        for (std::size_t i = 0; i < bridges_.size(); ++i) {
            if (bridges_[i].isCounted && ways[i] == above_)
                return;
            isNeeded = isNeeded || bridges_[i].isCounted;
        }
        const Way chosen = above_;
        std::optional<Way> lowest; // the one that the search comes to first
        for (std::size_t i = 0; isNeeded && i < bridges_.size(); ++i) {
            if (!bridges_[i].isCounted || ways[i].size() != chosen.size())
                continue;
            above_ = ways[i];
            const bool isBefore =
                !lowest || std::lexicographical_compare(above_.rbegin(), above_.rend(),
                                                        lowest->rbegin(), lowest->rend());
            if (isBefore && places().value()[i] == above_)
                lowest = above_;
        }
        above_ = lowest.value_or(chosen);
    }

    // Device 0 function 0 unless something described stands there or falls together by it; then the
    // next device, and only then another function. Each described bridge is in the way of one
    // device.
    void chooseAt(std::size_t level) {
        const std::size_t wanted = mostDistinct();
        const unsigned devices = std::min<unsigned>(32, static_cast<unsigned>(bridges_.size()) + 1);
        std::uint8_t best = 0;
        std::size_t most = 0;
        for (unsigned order = 0; order < devices * 8 && most < wanted; ++order) {
            above_[level] = static_cast<std::uint8_t>((order % devices) << 3U | order / devices);
            const std::size_t places = distinct();
            if (places > most) {
                most = places;
                best = above_[level];
            }
        }
        above_[level] = best;
    }

    // As many as there are when no two maps written differently lead to one place.
    [[nodiscard]] std::size_t mostDistinct() const {
        std::set<std::string_view> maps;
        for (const DescribedBridge& bridge : bridges_) {
            if (bridge.traversalMap.find_first_not_of("-,") != std::string::npos)
                maps.insert(bridge.traversalMap);
        }
        return maps.size() + above_.size();
    }

    const std::vector<DescribedBridge>& bridges_;
    Way above_; // the anchor's hop first
};

// As many levels as the maps go up, the one of the anchor included, and one more.
std::size_t depthOf(const std::vector<DescribedBridge>& bridges) {
    std::ptrdiff_t up = 0;
    for (const DescribedBridge& bridge : bridges)
        up = std::max(up, std::count(bridge.traversalMap.begin(), bridge.traversalMap.end(), '-'));
    return std::min(kDeepest, static_cast<std::size_t>(up) + 2);
}

// The levels that are the same for all: those belong to the machine.
std::size_t levelsInCommon(const Way& a, const Way& b) {
    std::size_t same = 0;
    while (same < a.size() && same < b.size() && a[a.size() - 1 - same] == b[b.size() - 1 - same])
        ++same;
    return same;
}

Way fromTop(const Way& nearestFirst, std::size_t cut) {
    return {nearestFirst.rbegin() + static_cast<std::ptrdiff_t>(cut), nearestFirst.rend()};
}

class ShapeMaker {
public:
    ShapeMaker(const BoxModel& model, std::size_t anchor, const std::set<std::string>& missing)
        : identity_(model.model.anchors[anchor]), missing_(missing) {
        shape_.described = model.bridges(anchor);
    }

    std::optional<BoxShape> make() {
        Placement placement(shape_.described, depthOf(shape_.described));
        if (!placement.choose())
            return std::nullopt;
        const std::vector<Way> ways = placement.ways();
        std::size_t cut = placement.anchor().size() - 1;
        for (const Way& way : ways)
            cut = std::min({cut, levelsInCommon(placement.anchor(), way), way.size() - 1});
        shape_.anchor = fromTop(placement.anchor(), cut);
        for (const Way& way : ways)
            places_.push_back(fromTop(way, cut));
        addParts();
        removeMissing();
        nameRoles();
        return std::move(shape_);
    }

private:
    void addParts() {
        const bool isBridge = identity_.headerType == kHeaderTypeBridge;
        shape_.parts[shape_.anchor] = {identity_.ids, isBridge};
        // Where several are described in one place the one that is counted stands there, and before
        // one that may be missing one that may not.
        for (const auto rank : {0, 1, 2}) {
            for (std::size_t i = 0; i < places_.size(); ++i) {
                const DescribedBridge& each = shape_.described[i];
                if ((each.isCounted ? 0 : each.isOptional ? 2 : 1) != rank)
                    continue;
                BoxPart& part = shape_.parts[places_[i]];
                if (!part.ids)
                    part.ids = each.ids;
                part.isBridge = true;
            }
        }
        addParents();
    }

    // The bridges that stand above parts.
    void addParents() {
        std::vector<Way> ways;
        for (const auto& [way, part] : shape_.parts)
            ways.push_back(way);
        for (Way way : ways) {
            for (way.pop_back(); !way.empty(); way.pop_back())
                shape_.parts[way].isBridge = true;
        }
    }

    void removeMissing() {
        for (std::size_t i = 0; i < places_.size(); ++i) {
            if (!missing_.contains(shape_.described[i].section))
                continue;
            const Way& gone = places_[i];
            std::erase_if(shape_.parts, [&](const auto& each) {
                const Way& way = each.first;
                return way.size() >= gone.size() &&
                       std::equal(gone.begin(), gone.end(), way.begin());
            });
        }
    }

    void nameRoles() {
        for (std::size_t i = 0; i < places_.size(); ++i) {
            const DescribedBridge& each = shape_.described[i];
            const bool isThere = shape_.parts.contains(places_[i]);
            const std::optional<Way> place = isThere ? std::optional(places_[i]) : std::nullopt;
            if (each.kind == DescribedBridge::Kind::downstreamPort)
                shape_.ports.push_back(place);
            else if (each.kind == DescribedBridge::Kind::upstreamPort)
                shape_.upstreamPort = place;
        }
        // The last one counts in the order of the walk: ports, internal bridges, upstream port.
        using Kind = DescribedBridge::Kind;
        for (const Kind kind : {Kind::downstreamPort, Kind::internalBridge, Kind::upstreamPort}) {
            for (std::size_t i = 0; i < places_.size(); ++i) {
                if (shape_.described[i].kind == kind && shape_.described[i].isReported)
                    shape_.reported = places_[i];
            }
        }
    }

    const tAnchorIdentity& identity_;
    const std::set<std::string>& missing_;
    BoxShape shape_;
    std::vector<Way> places_; // of the described ones
};

} // namespace

std::optional<BoxShape> shapeOf(const BoxModel& model, std::size_t anchor,
                                const std::set<std::string>& missing) {
    return ShapeMaker(model, anchor, missing).make();
}

} // namespace tavctl::mock
