#include "tavctl/mock/labelWidths.h"

#include "source/modelDescription.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>
#include <utility>

namespace tavctl::mock {

namespace {

using nZoTavManagerPciPlugin_15_0::kNoText;
using nZoTavManagerPciPlugin_15_0::tModelDescription;

constexpr unsigned kWidestLink = 32;
// Those that there are, the unusual one last.
constexpr std::array<std::uint8_t, 7> kWidths{1, 2, 4, 8, 16, 32, 12};

// The label without the number at its end: what the labels of one port have in common.
std::string_view stem(std::string_view label) {
    const std::size_t last = label.find_last_not_of("0123456789");
    return last == std::string_view::npos ? std::string_view() : label.substr(0, last + 1);
}

class WidthSearch {
public:
    WidthSearch(const tModelDescription& model, const std::vector<LabelTaker>& takers)
        : labels_(model.connectorLabels.begin(), model.connectorLabels.end()),
          perLabel_(static_cast<std::uint32_t>(model.linkWidthPerLabel)),
          passes_(model.anchors.size()), hasUpstream_(model.upstreamPort.traversalMap != kNoText) {
        for (const LabelTaker& taker : takers) {
            // Without lanes per label it makes no difference.
            leaders_.push_back(perLabel_ == 0 ? wishes_.size() : taker.sameAs);
            wishes_.push_back(taker.wish);
            share(wishes_.size() - 1);
        }
        for (const WidthWish& wish : wishes_)
            choices_.push_back(choicesOf(wish));
        widths_.resize(wishes_.size());
    }

    std::optional<LabelWidths> find() {
        if (contradicts_ || (hasUpstream_ && !wishes_.front()))
            return std::nullopt;
        if (tryGroups() || tryAll())
            return result();
        // With alternate anchors the ports are gone through again.
        for (std::size_t again = 1; again < passes_; ++again) {
            for (std::size_t onceMore = 0; onceMore <= ports(); ++onceMore) {
                weightOfAll_ = again;
                onceMore_ = onceMore;
                if (tryAll())
                    return result();
            }
        }
        return std::nullopt;
    }

private:
    struct Choice {
        std::size_t labels;
        std::uint8_t width;
    };

    // What is wished for one in a place is for all of them.
    void share(std::size_t at) {
        WidthWish& first = wishes_[leaders_[at]];
        const WidthWish wish = wishes_[at];
        if (leaders_[at] == at || !wish || wish == 0)
            return;
        contradicts_ = contradicts_ || (first != 0 && first != wish);
        first = wish;
    }

    [[nodiscard]] bool isLeader(std::size_t at) const { return leaders_[at] == at; }

    [[nodiscard]] std::size_t ports() const { return wishes_.size() - (hasUpstream_ ? 1U : 0U); }

    [[nodiscard]] std::size_t labelsOf(unsigned width) const {
        return perLabel_ == 0 ? 1 : width / perLabel_;
    }

    // For each number of labels one width.
    [[nodiscard]] std::vector<Choice> choicesOf(const WidthWish& wish) const {
        if (!wish)
            return {{0, 0}};
        if (*wish != 0 || perLabel_ == 0) {
            const std::uint8_t width = *wish != 0 ? *wish : std::uint8_t{1};
            return {{labelsOf(width), width}};
        }
        std::vector<Choice> choices;
        std::set<std::size_t> seen;
        const auto add = [&](std::uint8_t width) {
            if (seen.insert(labelsOf(width)).second)
                choices.push_back({labelsOf(width), width});
        };
        std::for_each(kWidths.begin(), kWidths.end(), add);
        for (unsigned width = 0; width <= kWidestLink; ++width)
            add(static_cast<std::uint8_t>(width));
        return choices;
    }

    // How often the labels of that one are taken.
    [[nodiscard]] std::size_t weight(std::size_t at) const {
        if (weightOfAll_ == 0 || (hasUpstream_ && at == 0))
            return 1;
        return weightOfAll_ + (at - (hasUpstream_ ? 1U : 0U) < onceMore_ ? 1U : 0U);
    }

    bool tryGroups() {
        if (perLabel_ == 0)
            return false;
        std::vector<std::size_t> sizes;
        for (std::size_t i = 0; i < labels_.size(); ++i) {
            if (i == 0 || stem(labels_[i]) != stem(labels_[i - 1]))
                sizes.push_back(0);
            ++sizes.back();
        }
        std::size_t group = 0;
        for (std::size_t at = 0; at < wishes_.size(); ++at) {
            if (wishes_[at] && group == sizes.size())
                return false;
            const std::size_t wanted = wishes_[at] ? sizes[group++] : 0;
            const auto choice =
                std::find_if(choices_[at].begin(), choices_[at].end(),
                             [&](const Choice& each) { return each.labels == wanted; });
            if (choice == choices_[at].end())
                return false;
            widths_[at] = choice->width;
            if (widths_[leaders_[at]] != choice->width)
                return false;
        }
        return group == sizes.size();
    }

    bool tryAll() {
        impossible_.clear();
        weights_.assign(wishes_.size(), 0);
        for (std::size_t at = 0; at < wishes_.size(); ++at)
            weights_[leaders_[at]] += weight(at);
        most_.assign(wishes_.size() + 1, 0);
        for (std::size_t at = wishes_.size(); at-- > 0;) {
            const auto widest = std::max_element(
                choices_[at].begin(), choices_[at].end(),
                [](const Choice& a, const Choice& b) { return a.labels < b.labels; });
            most_[at] = most_[at + 1] + widest->labels * weights_[at];
        }
        sharesPlaces_ = std::any_of(
            leaders_.begin(), leaders_.end(),
            [&, at = std::size_t{0}](std::size_t leader) mutable { return leader != at++; });
        return tryFrom(0, labels_.size());
    }

    // Whether those from `at` on can take so many labels, each; notes their widths.
    bool tryFrom(std::size_t at, std::size_t left) {
        if (at == wishes_.size())
            return left == 0;
        if (left > most_[at] || impossible_.contains({at, left}))
            return false;
        if (!isLeader(at)) {
            widths_[at] = widths_[leaders_[at]];
            return tryFrom(at + 1, left);
        }
        std::vector<Choice> choices = choices_[at];
        const auto there = static_cast<std::size_t>(
            std::count_if(wishes_.begin() + static_cast<std::ptrdiff_t>(at), wishes_.end(),
                          [](const WidthWish& wish) { return wish.has_value(); }));
        // What is left once this is reached is for all of those; an even share comes first.
        const std::size_t share = there == 0 ? 0 : (left + there - 1) / there;
        const auto awkwardness = [&](const Choice& each) {
            const bool unusual =
                std::find(kWidths.begin(), kWidths.end() - 1, each.width) == kWidths.end() - 1;
            return std::pair(unusual,
                             each.labels > share ? each.labels - share : share - each.labels);
        };
        std::stable_sort(choices.begin(), choices.end(), [&](const Choice& a, const Choice& b) {
            return awkwardness(a) < awkwardness(b);
        });
        // Where no label is left the walk does not look at a port any more.
        const bool isLooked = left != 0 || (hasUpstream_ && at == 0) || sharesPlaces_;
        for (const Choice& choice : choices) {
            const std::size_t taken = isLooked ? choice.labels * weights_[at] : 0;
            widths_[at] = choice.width;
            if (taken <= left && tryFrom(at + 1, left - taken))
                return true;
        }
        impossible_.emplace(at, left);
        return false;
    }

    [[nodiscard]] LabelWidths result() const {
        LabelWidths found;
        auto width = widths_.begin();
        auto label = labels_.begin();
        if (hasUpstream_) {
            found.upstreamPort = *width++;
            label += static_cast<std::ptrdiff_t>(labelsOf(found.upstreamPort));
        }
        found.ports.assign(width, widths_.end());
        const std::size_t first = hasUpstream_ ? 1 : 0;
        for (std::size_t pass = 0; pass < passes_; ++pass) {
            for (std::size_t port = 0; port < ports(); ++port) {
                const std::size_t count = wishes_[first + port] ? labelsOf(found.ports[port]) : 0;
                for (std::size_t n = 0; n < count && label != labels_.end(); ++n)
                    found.labels.push_back({port, *label++});
            }
        }
        return found;
    }

    std::vector<std::string> labels_;
    std::uint32_t perLabel_;
    std::size_t passes_;
    bool hasUpstream_;
    std::vector<WidthWish> wishes_;    // the upstream port's first
    std::vector<std::size_t> leaders_; // of each the first one in its place
    bool contradicts_ = false;         // whether two in one place are wished to be different
    bool sharesPlaces_ = false;
    std::vector<std::vector<Choice>> choices_;
    std::vector<std::uint8_t> widths_; // chosen so far
    std::size_t weightOfAll_ = 0;      // 0: the ports are gone through once
    std::size_t onceMore_ = 0;         // the ports that the last pass comes to
    std::vector<std::size_t> weights_; // how often each takes its labels, for all in its place
    std::vector<std::size_t> most_;    // the labels that those from there on can take
    std::set<std::pair<std::size_t, std::size_t>> impossible_;
};

} // namespace

std::optional<LabelWidths> widthsForLabels(const tModelDescription& model,
                                           const std::vector<LabelTaker>& takers) {
    return WidthSearch(model, takers).find();
}

} // namespace tavctl::mock
