// Text in columns.
#include "tavctl/words/textTable.h"

#include <gmock/gmock.h>

namespace {

using namespace tavctl;
using testing::ElementsAre;

TEST(TextTable, CutsCharactersNotBytes) {
    EXPECT_EQ(fitText("B\xC3\xB6xes", 5), "B\xC3\xB6xes");
    EXPECT_EQ(fitText("\xC3\xB6\xC3\xB6\xC3\xB6\xC3\xB6\xC3\xB6", 4), "\xC3\xB6...");
    EXPECT_EQ(fitText("abc", 0), "...");
}

TEST(TextTable, LastColumnIsNotFilledUp) {
    EXPECT_THAT(tableLines({{"A", "B"}, {"long", "x"}, {"y", ""}}, {}),
                ElementsAre("A     B", "long  x", "y"));
}

TEST(TextTable, CutsColumnsInTurnAndNoneTooFar) {
    const std::string wide(20, 'w');
    EXPECT_THAT(tableLines({{wide, wide}}, {1, 0}, 35),
                ElementsAre("wwwwwwwwwwwwwwwwwwww  wwwwwwwwww..."));
    EXPECT_THAT(tableLines({{wide, wide}}, {1, 0}, 25), ElementsAre("wwwwwwwwwwww...  wwwww..."));
    EXPECT_THAT(tableLines({{wide, wide}}, {1, 0}, 3), ElementsAre("wwwww...  wwwww..."));
}

TEST(TextTable, OfNoRowsHasNoLines) {
    EXPECT_THAT(tableLines({}, {}), ElementsAre());
}

} // namespace
