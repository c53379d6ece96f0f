// Text in columns.
#include "tavctl/words/textTable.h"

#include <gmock/gmock.h>

namespace {

using namespace tavctl;
using testing::ElementsAre;

TEST(TextTable, CutsCharactersNotBytes) {
    EXPECT_EQ(fitText("B\xC3\xB6xes", 5), "B\xC3\xB6xes");
    EXPECT_EQ(fitText("\xC3\xB6\xC3\xB6\xC3\xB6\xC3\xB6\xC3\xB6", 4), "\xC3\xB6...");
    EXPECT_EQ(fitText("\xC3\xA4\xC3\xB6\xC3\xB6\xC3\xB6\xC3\xB6\xC3\xBC", 5),
              "\xC3\xA4...\xC3\xBC");
    EXPECT_EQ(fitText("abc", 0), "...");
}

TEST(TextTable, CutsNamesInTheirMiddle) {
    EXPECT_EQ(fitText("Network Card Port 1", 12), "Netwo...rt 1");
    EXPECT_EQ(fitText("Network Card Port 2", 13), "Netwo...ort 2");
}

TEST(TextTable, LeavesOutWholeItemsOfAList) {
    EXPECT_EQ(fitItems("A,B,C", 5), "A,B,C");
    EXPECT_EQ(fitItems("AA,BB,CC,DD", 10), "AA,BB,+2");
    EXPECT_EQ(fitItems("AA,BB,CC,DD", 8), "AA,BB,+2");
    EXPECT_EQ(fitItems("AA,BB,CC,DD", 7), "AA,+3");
    EXPECT_EQ(fitItems("LONGLABEL,B", 8), "+2");
    EXPECT_EQ(fitItems("LONGLABEL", 8), "+1");
}

TEST(TextTable, LastColumnIsNotFilledUp) {
    EXPECT_THAT(tableLines({{"A", "B"}, {"long", "x"}, {"y", ""}}, {}),
                ElementsAre("A     B", "long  x", "y"));
}

TEST(TextTable, CutsColumnsInTurnAndNoneTooFar) {
    const std::string wide(20, 'w');
    EXPECT_THAT(tableLines({{wide, wide}}, {{1}, {0}}, 35),
                ElementsAre("wwwwwwwwwwwwwwwwwwww  wwwww...wwwww"));
    EXPECT_THAT(tableLines({{wide, wide}}, {{1}, {0}}, 25),
                ElementsAre("wwwwww...wwwwww  www...ww"));
    EXPECT_THAT(tableLines({{wide, wide}}, {{1}, {0}}, 3), ElementsAre("www...ww  www...ww"));
}

TEST(TextTable, OfNoRowsHasNoLines) {
    EXPECT_THAT(tableLines({}, {}), ElementsAre());
}

} // namespace
