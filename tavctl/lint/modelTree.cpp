#include "tavctl/lint/modelTree.h"

#include "pxidrivertools/cSlotPath.h"
#include "source/modelList.h"
#include "tavctl/bus/busQueries.h"
#include "tavctl/match/busBridges.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using nZoPxiDriverTools_1_0::cSlotPath;

constexpr unsigned kWidestLink = 32;
constexpr std::uint8_t kUsualWidth = 4;
// What a bridge that nobody describes is: nothing that anybody would ask for.
constexpr tPciIds kStandIn{0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF};
// The hop of the bridges above the anchor: device 31 function 7, where hardly a box has anything.
constexpr std::uint8_t kStandInHop = 0xFF;

// Root first.
using Way = std::vector<unsigned>;

struct Node {
    tPciIds ids = kStandIn;
    std::uint8_t width = kUsualWidth;
    bool isBridge = true;
};

class TreeBuilder {
public:
    explicit TreeBuilder(const tAnchorIdentity& anchor) : anchor_(anchor) {}

    // False when a map cannot be applied.
    bool add(const tModelDescription& model, bool withOptional) {
        const bool hasUpstream = model.upstreamPort.traversalMap != kNoText;
        several_ = model.anchors.size() > 1;
        labels_ = model.connectorLabels.size();
        waiting_ = hasUpstream ? 1 : 0;
        for (const tBridgeDescription& port : model.downstreamPorts)
            waiting_ += belongs(port) && (withOptional || !port.isOptional) ? 1U : 0U;
        bool fits = true;
        if (hasUpstream)
            fits = place(model.upstreamPort, takeWidth(model.linkWidthPerLabel));
        for (const tBridgeDescription& port : model.downstreamPorts) {
            if (belongs(port) && (withOptional || !port.isOptional))
                fits = place(port, takeWidth(model.linkWidthPerLabel)) && fits;
        }
        for (const tBridgeDescription& bridge : model.internalBridges) {
            if (belongs(bridge) && (withOptional || !bridge.isOptional))
                fits = place(bridge, kUsualWidth) && fits;
        }
        return fits;
    }

    std::shared_ptr<const pcibus::Bus> build() {
        Node& anchor = nodes_[base()];
        anchor.ids = anchor_.ids;
        anchor.isBridge = anchor_.headerType == kHeaderTypeBridge;
        addParents();
        std::vector<pcibus::PciFunction> functions;
        if (!number(functions))
            return nullptr;
        return std::make_shared<const pcibus::Bus>(std::move(functions), pcibus::addressText);
    }

private:
    // Deep enough for any map that goes up.
    static constexpr std::size_t kDepth = 8;

    static Way base() { return Way(kDepth, kStandInHop); }

    // Of a model with alternate anchors each anchor has its own copy of the bridges.
    [[nodiscard]] bool belongs(const tBridgeDescription& bridge) const {
        return !several_ || bridge.ids == anchor_.ids;
    }

    bool place(const tBridgeDescription& bridge, std::uint8_t width) {
        cSlotPath path;
        path.hops.assign(kDepth, kStandInHop);
        nZOQUIL000::tErrorStatus status;
        path.ApplyRelativePath(bridge.traversalMap, status);
        if (status.failed() || path.hops.empty())
            return false;
        nodes_.try_emplace(Way(path.hops.rbegin(), path.hops.rend()),
                           Node{bridge.ids, width, true});
        return true;
    }

    // A width by which the labels come out even: each port takes one label, the last ones what is
    // left.
    std::uint8_t takeWidth(std::int32_t perLabel) {
        if (perLabel <= 0)
            return kUsualWidth;
        const auto lanes = static_cast<std::size_t>(perLabel);
        const std::size_t others = waiting_ > 0 ? waiting_ - 1 : 0;
        waiting_ = others;
        const std::size_t wanted =
            labels_ > others ? labels_ - others : std::min<std::size_t>(labels_, 1);
        const std::size_t labels = std::min(wanted, kWidestLink / lanes);
        labels_ -= std::min(labels, labels_);
        return static_cast<std::uint8_t>(labels * lanes);
    }

    void addParents() {
        std::vector<Way> ways;
        for (const auto& [way, node] : nodes_)
            ways.push_back(way);
        for (Way way : ways) {
            for (way.pop_back(); !way.empty(); way.pop_back())
                nodes_[way].isBridge = true;
        }
    }

    // Gives the functions their bus numbers, depth first: the order of the ways is that already.
    bool number(std::vector<pcibus::PciFunction>& functions) {
        unsigned last = 0;
        std::vector<unsigned> buses{last}; // where the way at work leads, level by level
        for (const auto& [way, node] : nodes_) {
            pcibus::PciFunction function;
            function.bus = static_cast<std::uint8_t>(buses[way.size() - 1]);
            function.device = static_cast<std::uint8_t>(way.back() >> 3);
            function.function = static_cast<std::uint8_t>(way.back() & 7);
            function.headerType = node.isBridge ? 1 : 0;
            function.vendorId = node.ids.vendor;
            function.deviceId = node.ids.device;
            function.subsystemVendorId = node.ids.subsystemVendor;
            function.subsystemId = node.ids.subsystem;
            if (node.isBridge) {
                if (++last >= pcibus::Bus::kBusCount)
                    return false;
                function.secondaryBus = static_cast<std::uint8_t>(last);
                function.linkWidth = node.width;
                function.linkSpeed = 1;
                buses.resize(way.size());
                buses.push_back(last);
            }
            functions.push_back(function);
        }
        return true;
    }

    tAnchorIdentity anchor_;
    std::map<Way, Node> nodes_;
    std::size_t labels_ = 0;
    std::size_t waiting_ = 0;
    bool several_ = false;
};

class AnchorRecorder : public MatchObserver {
public:
    std::set<std::string> paths;

    void onDevice(const tBusAddress&, const cSlotPath& anchor, const tDeviceRecord&) override {
        paths.insert(slotPathText(anchor));
    }
};

// The anchors that a model is listed by.
std::set<std::string> listedAnchors(const tModelDescription& model,
                                    const std::shared_ptr<const pcibus::Bus>& bus) {
    AnchorRecorder recorder;
    ModelList models({model});
    ModelMatcher(recordedBus(bus)).observe(models, recorder);
    return std::move(recorder.paths);
}

bool isListedAsBoth(const tModelDescription& first, const tModelDescription& second,
                    const std::shared_ptr<const pcibus::Bus>& bus) {
    if (bus == nullptr)
        return false;
    const auto anchors = listedAnchors(first, bus);
    if (anchors.empty())
        return false;
    const auto others = listedAnchors(second, bus);
    return std::any_of(anchors.begin(), anchors.end(),
                       [&](const std::string& each) { return others.contains(each); });
}

bool isSame(const tAnchorIdentity& a, const tAnchorIdentity& b) {
    return a.ids == b.ids &&
           (a.headerType == kHeaderTypeBridge) == (b.headerType == kHeaderTypeBridge);
}

} // namespace

std::shared_ptr<const pcibus::Bus> busOf(std::span<const tModelDescription* const> models,
                                         std::size_t anchor, bool withOptional) {
    TreeBuilder builder(models.front()->anchors.at(anchor));
    for (const tModelDescription* model : models) {
        if (!builder.add(*model, withOptional))
            return nullptr;
    }
    return builder.build();
}

bool satisfiedByOneTree(const tModelDescription& first, const tModelDescription& second) {
    for (std::size_t i = 0; i < first.anchors.size(); ++i) {
        const auto shared =
            std::find_if(second.anchors.begin(), second.anchors.end(),
                         [&](const auto& each) { return isSame(each, first.anchors[i]); });
        if (shared == second.anchors.end())
            continue;
        const auto j = static_cast<std::size_t>(shared - second.anchors.begin());
        const tModelDescription* const both[] = {&first, &second};
        const tModelDescription* const turned[] = {&second, &first};
        for (const bool withOptional : {true, false}) {
            // The likeliest first.
            if (isListedAsBoth(first, second, busOf(both, i, withOptional)) ||
                isListedAsBoth(first, second, busOf(std::span(both).first(1), i, withOptional)) ||
                isListedAsBoth(first, second, busOf(std::span(turned).first(1), j, withOptional)))
                return true;
        }
    }
    return false;
}

} // namespace tavctl::lint
