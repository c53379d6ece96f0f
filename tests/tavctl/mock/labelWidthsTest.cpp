// Widths by which the labels of a model come out even.
#include "tavctl/mock/labelWidths.h"

#include <gmock/gmock.h>

namespace {

using namespace tavctl::mock;
using nZoTavManagerPciPlugin_15_0::tModelDescription;
using testing::ElementsAre;

tModelDescription modelWith(std::list<std::string> labels, std::int32_t perLabel,
                            bool hasUpstream = false) {
    tModelDescription model;
    model.connectorLabels = std::move(labels);
    model.linkWidthPerLabel = perLabel;
    model.anchors.resize(1);
    if (hasUpstream)
        model.upstreamPort.traversalMap = "";
    return model;
}

// Takers with these wishes, each in a place of its own.
std::vector<LabelTaker> takers(const std::vector<WidthWish>& wishes) {
    std::vector<LabelTaker> result;
    for (const WidthWish& wish : wishes)
        result.push_back({wish, result.size()});
    return result;
}

constexpr std::uint8_t kAny = 0;

std::list<std::string> numbered(int count) {
    std::list<std::string> labels;
    for (int i = 0; i < count; ++i)
        labels.push_back(std::string(1, 'A') + std::to_string(i));
    return labels;
}

TEST(LabelWidths, LabelsThatDifferInANumberAreOfOnePort) {
    const auto widths =
        widthsForLabels(modelWith({"UP1", "UP2", "A", "B1", "B2", "B3", "B4"}, 4, true),
                        takers({kAny, kAny, kAny}));
    ASSERT_TRUE(widths.has_value());
    EXPECT_EQ(widths->upstreamPort, 8);
    EXPECT_THAT(widths->ports, ElementsAre(4, 16));
    ASSERT_EQ(widths->labels.size(), 5U);
    EXPECT_EQ(widths->labels[0].label, "A");
    EXPECT_EQ(widths->labels[4].label, "B4");
    EXPECT_EQ(widths->labels[4].port, 1U);
}

TEST(LabelWidths, OthersAreSharedEvenly) {
    const auto widths = widthsForLabels(modelWith(numbered(6), 4), takers({kAny, kAny, kAny}));
    ASSERT_TRUE(widths.has_value());
    EXPECT_THAT(widths->ports, ElementsAre(8, 8, 8));
}

TEST(LabelWidths, GoesAroundWhatIsWishedForAndMissing) {
    const auto widths =
        widthsForLabels(modelWith(numbered(6), 4), takers({16, std::nullopt, kAny}));
    ASSERT_TRUE(widths.has_value());
    EXPECT_THAT(widths->ports, ElementsAre(16, 0, 8));
    EXPECT_FALSE(widthsForLabels(modelWith(numbered(6), 4), takers({32, kAny})));
    EXPECT_FALSE(widthsForLabels(modelWith(numbered(2), 0), takers({kAny})));
    EXPECT_FALSE(widthsForLabels(modelWith(numbered(2), 64), takers({kAny})));
}

// The usual widths do not do here.
TEST(LabelWidths, TakesUnusualOnesWhereItMust) {
    const auto widths = widthsForLabels(modelWith(numbered(5), 4), takers({kAny}));
    ASSERT_TRUE(widths.has_value());
    EXPECT_THAT(widths->ports, ElementsAre(20));
}

TEST(LabelWidths, WithoutLanesAPortTakesOneLabel) {
    const auto widths = widthsForLabels(modelWith(numbered(2), 0), takers({kAny, 8, kAny}));
    ASSERT_TRUE(widths.has_value());
    EXPECT_THAT(widths->ports, ElementsAre(1, 8, 1));
    EXPECT_EQ(widths->labels.size(), 2U); // the third port is not looked at
}

TEST(LabelWidths, AlternateAnchorsBringThePortsRoundAgain) {
    tModelDescription model = modelWith(numbered(7), 0);
    model.anchors.resize(4);
    const auto widths = widthsForLabels(model, takers({kAny, kAny}));
    ASSERT_TRUE(widths.has_value());
    ASSERT_EQ(widths->labels.size(), 7U);
    EXPECT_EQ(widths->labels[6].port, 0U);
    model.connectorLabels = numbered(9);
    EXPECT_FALSE(widthsForLabels(model, takers({kAny, kAny})));
    model.linkWidthPerLabel = 8;
    model.connectorLabels = numbered(11); // 2 and 1, three times, and 2 once more
    const auto wide = widthsForLabels(model, takers({16, 8}));
    ASSERT_TRUE(wide.has_value());
    EXPECT_EQ(wide->labels.size(), 11U);
    EXPECT_EQ(wide->labels.back().port, 0U);
}

TEST(LabelWidths, PortsInOnePlaceHaveOneWidth) {
    std::vector<LabelTaker> shared = takers({kAny, kAny, kAny});
    shared[2].sameAs = 0;
    const auto widths = widthsForLabels(modelWith(numbered(9), 4), shared);
    ASSERT_TRUE(widths.has_value());
    EXPECT_EQ(widths->ports[0], widths->ports[2]);
    EXPECT_EQ((widths->ports[0] / 4) * 2 + widths->ports[1] / 4, 9);
    shared[0].wish = 8;
    shared[2].wish = 4;
    EXPECT_FALSE(widthsForLabels(modelWith(numbered(9), 4), shared));
    shared[0].wish = kAny;
    const auto wished = widthsForLabels(modelWith(numbered(4), 4), shared);
    ASSERT_TRUE(wished.has_value());
    EXPECT_THAT(wished->ports, ElementsAre(4, 8, 4));
}

} // namespace
