#include "tavctl/mock/wishes.h"

#include "source/descriptionLoader.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <cstdint>
#include <map>

namespace tavctl::mock {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using Kind = DescribedBridge::Kind;

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
        refuse(place, fmt::format("{} is no label and no bridge of this model; {}", inQuotes(name),
                                  names.empty() ? std::string("it has none")
                                                : "there are " + enumerated(names)));
    }

    const PlannedBox& plan_;
    std::vector<DescribedBridge> described_;
    std::optional<LabelWidths> widths_;
};

} // namespace

BoxWishes wishesOf(const PlannedBox& plan, const BoxModel& model, std::size_t anchor) {
    return WishReader(plan, model, anchor).read();
}

std::optional<LabelWidths> widthsOf(const BoxModel& model, const BoxShape& shape,
                                    const BoxWishes& wishes) {
    std::vector<LabelTaker> takers;
    std::map<Way, std::size_t> first; // in each place
    std::size_t port = 0;
    for (std::size_t i = 0; i < shape.described.size(); ++i) {
        const Kind kind = shape.described[i].kind;
        if (kind == Kind::internalBridge)
            continue;
        const auto& place = kind == Kind::upstreamPort ? shape.upstreamPort : shape.ports[port++];
        const PlannedPort* const wish = wishes.bridges[i];
        LabelTaker taker{std::nullopt, takers.size()};
        if (place) {
            taker.wish = wish != nullptr ? wish->link.maximumWidth : std::uint8_t{0};
            taker.sameAs = first.emplace(*place, takers.size()).first->second;
        }
        takers.push_back(taker);
    }
    return widthsForLabels(model.model, takers);
}

} // namespace tavctl::mock
