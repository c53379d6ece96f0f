// The drawing as Graphviz gets it.
#include "tavctl/draw/drawing.h"

#include "tavctl/draw/dotText.h"
#include "tavctl/draw/tiling.h"
#include "tests/tavctl/match/treeFixture.h"

#include <gmock/gmock.h>

namespace {

using namespace tavctl;
using tavctltest::TreeFixture;
using testing::HasSubstr;
using testing::Not;

PciNames namesForDrawing() {
    return PciNames::parse("1172  Logic\n\te001  A Card With a Name That Goes On and On\n"
                           "8086  Maker\n\t29c0  Host Bridge\n");
}

// The texts of a drawing in their order, without markup.
std::vector<std::string> textsOf(const std::string& dot) {
    std::vector<std::string> texts;
    std::string text;
    bool inTag = true;
    for (std::size_t i = dot.find("\n  d0 ["); i < dot.size(); ++i) {
        if (dot[i] == '<') {
            if (!inTag && !text.empty())
                texts.push_back(text);
            inTag = true;
            text.clear();
        } else if (dot[i] == '>') {
            inTag = dot[i + 1] == ']';
        } else if (!inTag) {
            text += dot[i];
        }
    }
    return texts;
}

// Of a machine of one domain.
std::string drawn(const BusTreeView& view, DrawingOptions::Kind kind = {}) {
    return drawingAsDot({&view, 1}, namesForDrawing(), {"bus", kind});
}

TEST(Drawing, BoxHasItsConnectorsInLabelOrderWithWhatIsPluggedIn) {
    const TreeFixture fixture;
    const auto placed = fixture.placed();
    const std::string dot = drawn(BusTreeView(fixture.domain(), placed));
    EXPECT_THAT(textsOf(dot),
                testing::ElementsAre("TAV1", "&#160;&#160;&#160;", "01:00.0", "Box&#160;", "A",
                                     "A Card With a ...oes On and On", "x4 8 GT/s", "B1", "empty",
                                     "up to x8 8 GT/s", "B2", "-", "missing", " ", "-", "empty",
                                     "up to x8 8 GT/s", "00:04.0"));
    EXPECT_THAT(dot, HasSubstr("  w0:e -> d0:h:w\n"));
    EXPECT_THAT(dot, HasSubstr(">1 device<"));
}

// What hangs in a connector is drawn beside it, wherever the two stand in the list.
TEST(Drawing, DeviceInAConnectorIsJoinedToIt) {
    TreeFixture fixture;
    ListedDevice card;
    card.model = "Card";
    card.category = 10;
    card.bus = 3;
    card.terminalName = "CARD1";
    std::vector<PlacedDevice> placed = placeDevices({card}, {}, fixture.bus);
    placed.push_back(fixture.placed().front());
    const std::string dot = drawn(BusTreeView(fixture.domain(), placed));
    EXPECT_THAT(dot, HasSubstr("  d1:p0:e -> d0:h:w\n"));
    EXPECT_THAT(dot, HasSubstr("  w1:e -> d1:h:w\n"));
    EXPECT_THAT(dot, Not(HasSubstr("  w0:e")));
    EXPECT_THAT(dot, HasSubstr("<FONT COLOR=\"#1d4ed8\">CARD1</FONT>"));
    EXPECT_THAT(dot, HasSubstr(">2 devices<"));
}

TEST(Drawing, ShowsOnlyTheDevicesOfThePart) {
    TreeFixture fixture;
    const auto placed = fixture.placed();
    BusTreeView elsewhere(fixture.domain(), placed);
    elsewhere.showOnly({fixture.machine.handle(fixture.second)});
    const std::string none = drawn(elsewhere);
    EXPECT_THAT(none, Not(HasSubstr("TAV1")));
    EXPECT_THAT(none, HasSubstr("no described device is present"));
    BusTreeView here(fixture.domain(), placed);
    here.showOnly({fixture.machine.handle(fixture.card)});
    EXPECT_THAT(drawn(here), HasSubstr("TAV1"));
}

TEST(Drawing, ArrayIsAsWideAsAScreenAndFull) {
    const TreeFixture fixture;
    const std::vector<PlacedDevice> many(10, fixture.placed().front());
    const std::string dot = drawn(BusTreeView(fixture.domain(), many));
    EXPECT_THAT(dot, HasSubstr("packmode=\"array_it4\"")); // four rows of three, two cells empty
    std::size_t fillers = 0;
    for (auto at = dot.find("style=invis"); at != std::string::npos;
         at = dot.find("style=invis", at + 1))
        ++fillers;
    EXPECT_EQ(fillers, 2U);
    // The first column from the bottom up.
    const char* const order[] = {"\n  d9 [", "\n  d6 [", "\n  d3 [", "\n  d0 [", "\n  t10 ["};
    for (std::size_t i = 0; i + 1 < std::size(order); ++i)
        EXPECT_LT(dot.find(order[i]), dot.find(order[i + 1])) << order[i];
}

TEST(Drawing, LongTextsButLabelsAreCutAndToldInFullByTheTooltip) {
    TreeFixture fixture;
    fixture.listed[0].model = std::string(200, 'm');
    fixture.listed[0].terminalName = std::string(200, 'n');
    fixture.listed[0].ports[0].label = std::string(200, 'l');
    const auto placed = placeDevices(fixture.listed, {}, fixture.bus);
    const std::string dot = drawn(BusTreeView(fixture.domain(), placed));
    EXPECT_THAT(dot,
                HasSubstr(">" + std::string(17, 'm') + "..." + std::string(16, 'm') + "&#160;<"));
    EXPECT_THAT(dot, HasSubstr(">" + std::string(17, 'n') + "..." + std::string(16, 'n') + "<"));
    EXPECT_THAT(dot, HasSubstr(">" + std::string(200, 'l') + "<"));
    EXPECT_THAT(dot, HasSubstr("tooltip=\"" + fixture.listed[0].terminalName + ": "));
}

TEST(Drawing, PortThatCannotBePlacedSaysSo) {
    TreeFixture fixture;
    for (ListedPort& port : fixture.listed[0].ports)
        port.secondaryBus = 0;
    const auto placed = placeDevices(fixture.listed, {}, fixture.bus);
    EXPECT_THAT(drawn(BusTreeView(fixture.domain(), placed)), HasSubstr("unknown"));
}

// Descriptions may take two devices for each other's contents.
TEST(Drawing, DevicesWithinEachOtherAreStillDrawn) {
    const TreeFixture fixture;
    std::vector<PlacedDevice> placed(2, fixture.placed().front());
    placed[0].ports.resize(1);
    placed[0].ports[0].bridge = fixture.machine.handle(fixture.root);
    placed[1].ports[0].bridge = fixture.machine.handle(fixture.root);
    const std::string dot = drawn(BusTreeView(fixture.domain(), placed));
    EXPECT_THAT(dot, HasSubstr("\n  d0 ["));
    EXPECT_THAT(dot, HasSubstr("\n  d1 ["));
}

TEST(Drawing, SeveralFunctionsInAConnectorAreTheFirstAndANumber) {
    TreeFixture fixture;
    fixture.machine.endpoint(fixture.portA, 0, 1, {0x1172, 0xE002, 0, 0});
    fixture.machine.endpoint(fixture.portA, 0, 2, {0x1172, 0xE003, 0, 0});
    fixture.bus = pcibus::parseDump(fixture.machine.dump(), "machine");
    const auto placed = fixture.placed();
    const std::string dot = drawn(BusTreeView(fixture.domain(), placed));
    EXPECT_THAT(dot, HasSubstr("A Card With ...es On and On +2"));
}

// What stands in a box but in none of its connectors has a place of its own.
TEST(Drawing, DeviceBelowABoxWithoutPortsStandsOnItsOwn) {
    TreeFixture fixture;
    fixture.listed[0].ports.clear();
    ListedDevice card;
    card.model = "Card";
    card.category = 10;
    card.bus = 3;
    card.terminalName = "TAV2";
    fixture.listed.push_back(card);
    const auto placed = placeDevices(fixture.listed, {}, fixture.bus);
    const std::string dot = drawn(BusTreeView(fixture.domain(), placed));
    EXPECT_THAT(dot, HasSubstr("  w0:e -> d0:h:w\n"));
    EXPECT_THAT(dot, HasSubstr("  w1:e -> d1:h:w\n"));
    EXPECT_THAT(dot, Not(HasSubstr("  d0:p")));
}

TEST(DotText, EscapesMarkupAndReplacesWhatIsNoText) {
    EXPECT_EQ(markupText("a<b>&\"c\""), "a&lt;b&gt;&amp;&quot;c&quot;");
    EXPECT_EQ(markupText("\xC3\xB6\xFF\n"), "\xC3\xB6&#92;xFF&#92;x0A");
    EXPECT_EQ(markupText("ends with \\"), "ends with &#92;");
    EXPECT_EQ(tooltipText("a\\N\n<b>"), "a&#92;&#92;N&#10;&lt;b&gt;");
    EXPECT_EQ(fontText("COLOR=\"red\"", "<"), "<FONT COLOR=\"red\">&lt;</FONT>");
}

} // namespace
