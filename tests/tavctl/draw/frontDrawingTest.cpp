// The devices as front plates.
#include "tavctl/draw/frontDrawing.h"

#include "tests/tavctl/match/treeFixture.h"

#include <gmock/gmock.h>

namespace {

using namespace tavctl;
using tavctltest::TreeFixture;
using testing::HasSubstr;
using testing::Not;

std::string frontsDot(const TreeFixture& fixture, const std::vector<PlacedDevice>& placed) {
    return frontsAsDot(BusTreeView(fixture.domain(), placed),
                       PciNames::parse("1172  Logic\n\te001  A Card With a Name\n"), "bus");
}

std::size_t countOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

TEST(FrontDrawing, HasConnectorsSideBySideInTheOrderOfTheLabels) {
    const TreeFixture fixture;
    const std::string dot = frontsDot(fixture, fixture.placed());
    const std::size_t a = dot.find("<B>A</B></TD><TD");
    const std::size_t b1 = dot.find("<B>B1</B></TD><TD");
    const std::size_t b2 = dot.find("<B>B2</B></TD><TD");
    ASSERT_NE(b2, std::string::npos) << dot;
    EXPECT_LT(a, b1);
    EXPECT_LT(b1, b2);
    EXPECT_THAT(dot, HasSubstr("<TD COLSPAN=\"2\" HEIGHT=\"46\"")); // both of the port
    EXPECT_THAT(dot, HasSubstr("<TD>A Card With<BR/>a Name</TD>"));
    EXPECT_EQ(countOf(dot, "STYLE=\"dashed\""), 3U); // B1 and B2, the missing one, the last one
    EXPECT_THAT(dot, Not(HasSubstr("->")));
}

TEST(FrontDrawing, NestedDeviceHasAPlateThatTellsWhereItHangs) {
    TreeFixture fixture;
    ListedDevice card;
    card.model = "Card";
    card.category = 10;
    card.bus = 3;
    card.terminalName = "CARD1";
    fixture.listed.push_back(card);
    const std::string dot = frontsDot(fixture, placeDevices(fixture.listed, {}, fixture.bus));
    EXPECT_THAT(dot, HasSubstr(">CARD1</FONT></TD>"));
    EXPECT_THAT(dot, HasSubstr(">in connector A of TAV1<"));
}

TEST(FrontDrawing, WrapsManyConnectorsInRowsOfEqualLength) {
    TreeFixture fixture;
    fixture.listed[0].ports.clear();
    for (int number = 1; number <= 12; ++number)
        fixture.listed[0].ports.push_back({"P" + std::to_string(number), 3, 4, 3});
    std::vector<PlacedDevice> placed = placeDevices(fixture.listed, {}, fixture.bus);
    PlacedPort port = placed[0].ports[0];
    placed[0].ports.clear();
    for (int number = 1; number <= 12; ++number) {
        port.labels = {"P" + std::to_string(number)};
        placed[0].ports.push_back(port);
    }
    const std::string dot = frontsDot(fixture, placed);
    EXPECT_EQ(countOf(dot, "CELLBORDER=\"1\" CELLSPACING=\"4\""), 2U);
    const std::size_t second = dot.rfind("CELLBORDER=\"1\" CELLSPACING=\"4\"");
    EXPECT_LT(dot.find("<B>P6</B>"), second);
    EXPECT_GT(dot.find("<B>P7</B>"), second);
}

TEST(FrontDrawing, LabelsAreWholeAndBrokenAtBlanks) {
    TreeFixture fixture;
    fixture.listed[0].ports[0].label = "Front panel upper left corner " + std::string(60, 'l');
    const std::string dot = frontsDot(fixture, placeDevices(fixture.listed, {}, fixture.bus));
    EXPECT_THAT(dot, HasSubstr("Front panel<BR/>upper left<BR/>corner<BR/>" + std::string(60, 'l') +
                               "</B>"));
}

TEST(FrontDrawing, ManyPlatesStandInColumns) {
    const TreeFixture fixture;
    const std::vector<PlacedDevice> many(20, fixture.placed().front());
    const std::string dot = frontsDot(fixture, many);
    EXPECT_THAT(dot, HasSubstr("\n  f0 ["));
    EXPECT_GE(countOf(dot, "[style=invis, weight=1000]"), 2U);
    EXPECT_EQ(countOf(dot, "<B>TAV1</B>"), 20U);
}

TEST(FrontDrawing, OfNoDevicesSaysSo) {
    const TreeFixture fixture;
    EXPECT_THAT(frontsDot(fixture, {}), HasSubstr("no described device is present"));
}

} // namespace
