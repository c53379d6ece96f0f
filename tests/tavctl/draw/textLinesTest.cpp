// Texts in lines, for cells of a drawing.
#include "tavctl/draw/textLines.h"

#include <gmock/gmock.h>

namespace {

using namespace tavctl;
using testing::ElementsAre;

TEST(TextLines, BreaksLinesAtBlanksOnly) {
    EXPECT_THAT(brokenLines("Front panel left", 11), ElementsAre("Front panel", "left"));
    EXPECT_THAT(brokenLines("Frontpanelleft 1", 5), ElementsAre("Frontpanelleft", "1"));
    EXPECT_THAT(brokenLines("", 5), ElementsAre(""));
}

TEST(TextLines, FitsLinesAndTakesTheMiddleAwayWhereItMust) {
    EXPECT_THAT(fittedLines("Gigabit Network Card", 10, 3),
                ElementsAre("Gigabit", "Network", "Card"));
    EXPECT_THAT(fittedLines("Gigabit Network Card", 12, 2), ElementsAre("Gigabit", "Network Card"));
    for (const std::size_t width : {6U, 9U, 12U}) {
        const auto lines = fittedLines("A Gigabit Network Card with a Name that Goes On", width, 2);
        EXPECT_LE(lines.size(), 2U);
        for (const std::string& line : lines)
            EXPECT_LE(line.size(), width);
        EXPECT_EQ(lines.front().front(), 'A');
        EXPECT_EQ(lines.back().back(), 'n');
    }
    EXPECT_THAT(fittedLines(std::string(9, 'x'), 4, 2), ElementsAre("xxx.", "..xx"));
}

} // namespace
