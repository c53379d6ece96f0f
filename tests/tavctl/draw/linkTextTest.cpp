// Links as drawings tell them: how they run, or could.
#include "tavctl/draw/linkText.h"

#include "tests/tavctl/match/treeFixture.h"

#include <gmock/gmock.h>

namespace {

using namespace tavctl;
using tavctltest::TreeFixture;
using testing::HasSubstr;
using testing::Not;

LinkText linkAt(const TreeFixture& fixture, testsupport::BusBuilder::Node node) {
    static const std::vector<PlacedDevice> kNone;
    const BusTreeView view(fixture.domain(), kNone);
    return linkTextOf(view, *view.bus().find(fixture.machine.handle(node)));
}

TEST(LinkText, TellsHowItRunsAndWhatEachEndCan) {
    TreeFixture fixture;
    fixture.machine.setRunningLink(fixture.root, 8, 2);
    const LinkText link = linkAt(fixture, fixture.root);
    EXPECT_EQ(link.text, "x8 5 GT/s");
    EXPECT_EQ(link.whole,
              "runs at x8 5 GT/s\nthis end: up to x8 5 GT/s\nthe other end: up to x8 8 GT/s");
    EXPECT_FALSE(link.isReduced);
    EXPECT_THAT(linkMarkup(link), Not(HasSubstr("#b45309")));
}

TEST(LinkText, MarksWhatRunsBelowWhatBothEndsCan) {
    TreeFixture fixture;
    fixture.machine.setRunningLink(fixture.root, 4, 1);
    const LinkText link = linkAt(fixture, fixture.root);
    EXPECT_EQ(link.text, "x4 of x8 2.5 of 5 GT/s");
    EXPECT_THAT(link.whole,
                HasSubstr("runs at x4 of x8 2.5 of 5 GT/s, below what both ends can\n"));
    EXPECT_TRUE(link.isReduced);
    EXPECT_THAT(linkMarkup(link), HasSubstr("#b45309"));
}

TEST(LinkText, OfAnEmptyConnectorIsWhatItCould) {
    const TreeFixture fixture;
    const LinkText link = linkAt(fixture, fixture.portB);
    EXPECT_EQ(link.text, "up to x8 8 GT/s");
    EXPECT_EQ(link.whole, "this end: up to x8 8 GT/s");
    EXPECT_FALSE(link.isReduced);
}

// An upstream port's link is the one above it, and a function that is no bridge has none below.
TEST(LinkText, IsOfThePortAboveAlone) {
    const TreeFixture fixture;
    EXPECT_EQ(linkAt(fixture, fixture.up).text, "");
    EXPECT_EQ(linkAt(fixture, fixture.card).text, "");
    EXPECT_EQ(linkMarkup(linkAt(fixture, fixture.other)), " ");
}

} // namespace
