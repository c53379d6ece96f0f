#include "tavctl/mock/wishes.h"

#include "source/descriptionLoader.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

namespace tavctl::mock {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using Kind = DescribedBridge::Kind;

constexpr unsigned kWidestLink = 32;

class WishReader {
public:
    WishReader(const PlannedBox& plan, const BoxModel& model, std::size_t anchor)
        : plan_(plan), described_(model.bridges(anchor)) {
        // By what stands beside the connectors of a whole box.
        if (const auto shape = shapeOf(model, anchor, {})) {
            BoxWishes none;
            none.bridges.resize(described_.size());
            widths_ = widthsOf(model, *shape, none);
        }
    }

    BoxWishes read() {
        BoxWishes wishes;
        wishes.bridges.resize(described_.size());
        for (const auto& [name, port] : plan_.ports) {
            const auto at = name.empty() ? upstreamPort() : find(name, port.place);
            if (!at)
                wishes.wayUp = &port;
            else if (wishes.bridges[*at] != nullptr)
                refuse(port.place, fmt::format("something was said of [{}] by another name before",
                                               described_[*at].section));
            else
                wishes.bridges[*at] = &port;
        }
        for (const Said& missing : plan_.missing)
            wishes.missing.insert(described_[*find(missing.text, missing.place)].section);
        return wishes;
    }

private:
    [[nodiscard]] std::optional<std::size_t> upstreamPort() const {
        if (!described_.empty() && described_.front().kind == Kind::upstreamPort)
            return 0;
        return std::nullopt;
    }

    [[nodiscard]] std::optional<std::size_t> find(const std::string& name,
                                                  const std::string& place) const {
        for (std::size_t i = 0; i < described_.size(); ++i) {
            if (described_[i].section == name)
                return i;
        }
        const std::size_t firstPort = upstreamPort() ? 1 : 0;
        if (widths_) {
            for (const auto& label : widths_->labels) {
                if (label.label == name)
                    return firstPort + label.port;
            }
        }
        std::vector<std::string> names;
        for (const DescribedBridge& bridge : described_)
            names.push_back(bridge.section);
        refuse(place, fmt::format("{} is no label and no bridge of this model; {}", quoted(name),
                                  names.empty() ? std::string("it has none")
                                                : "there are " + enumerated(names)));
    }

    const PlannedBox& plan_;
    std::vector<DescribedBridge> described_;
    std::optional<LabelWidths> widths_;
};

// Widths for ports of which several may be one bridge.
class SharedWidths {
public:
    SharedWidths(const BoxModel& model, const BoxShape& shape, const BoxWishes& wishes)
        : model_(model) {
        std::size_t port = 0;
        for (std::size_t i = 0; i < shape.described.size(); ++i) {
            const Kind kind = shape.described[i].kind;
            if (kind == Kind::internalBridge)
                continue;
            const auto& place = kind == Kind::upstreamPort ? shape.upstreamPort : shape.ports[port];
            const PlannedPort* const wish = wishes.bridges[i];
            WidthWish width;
            if (place)
                width = wish != nullptr ? wish->link.maximumWidth : std::uint8_t{0};
            (kind == Kind::upstreamPort ? upstream_ : ports_.emplace_back()) = width;
            if (kind == Kind::upstreamPort)
                upstreamPlace_ = place;
            else
                ++port;
        }
        places_ = shape.ports;
    }

    std::optional<LabelWidths> find() {
        auto widths = widthsForLabels(model_.model, upstream_, ports_);
        if (!widths)
            return std::nullopt;
        for (std::size_t i = 0; i < ports_.size(); ++i) {
            if (const auto other = differing(*widths, i))
                return findShared(*other, i);
        }
        return widths;
    }

private:
    static constexpr std::size_t kUpstream = static_cast<std::size_t>(-1);

    [[nodiscard]] const std::optional<Way>& placeOf(std::size_t port) const {
        return port == kUpstream ? upstreamPlace_ : places_[port];
    }
    WidthWish& wishOf(std::size_t port) { return port == kUpstream ? upstream_ : ports_[port]; }

    // A port before this one in the same place with another width.
    [[nodiscard]] std::optional<std::size_t> differing(const LabelWidths& widths,
                                                       std::size_t port) const {
        if (!places_[port])
            return std::nullopt;
        if (upstreamPlace_ == places_[port] && widths.upstreamPort != widths.ports[port])
            return kUpstream;
        for (std::size_t before = 0; before < port; ++before) {
            if (places_[before] == places_[port] && widths.ports[before] != widths.ports[port])
                return before;
        }
        return std::nullopt;
    }

    std::optional<LabelWidths> findShared(std::size_t one, std::size_t other) {
        const WidthWish before = wishOf(one);
        const WidthWish beforeOther = wishOf(other);
        for (unsigned width = 1; width <= kWidestLink; ++width) {
            const auto lanes = static_cast<std::uint8_t>(width);
            if ((before != 0 && before != lanes) || (beforeOther != 0 && beforeOther != lanes))
                continue;
            wishOf(one) = wishOf(other) = lanes;
            if (auto widths = find())
                return widths;
        }
        wishOf(one) = before;
        wishOf(other) = beforeOther;
        return std::nullopt;
    }

    const BoxModel& model_;
    WidthWish upstream_;
    std::vector<WidthWish> ports_;
    std::optional<Way> upstreamPlace_;
    std::vector<std::optional<Way>> places_;
};

} // namespace

BoxWishes wishesOf(const PlannedBox& plan, const BoxModel& model, std::size_t anchor) {
    return WishReader(plan, model, anchor).read();
}

std::optional<LabelWidths> widthsOf(const BoxModel& model, const BoxShape& shape,
                                    const BoxWishes& wishes) {
    return SharedWidths(model, shape, wishes).find();
}

} // namespace tavctl::mock
