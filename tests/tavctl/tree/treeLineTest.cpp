// A line of the tree that has to fit.
#include "tavctl/tree/treeLine.h"

#include <gtest/gtest.h>

namespace {

using tavctl::TextStyle;
using tavctl::TreeLine;

std::string fitted(std::size_t width) {
    TreeLine line("+-00.0");
    line.add(TreeLine::Dress::mark, "{TAV1: ", "Long Model Name", "}");
    line.add(TreeLine::Dress::mark, "{TAV1 port \"A long label\"}");
    line.add(TreeLine::Dress::plain, {}, "Maker Device Name");
    return line.text(width, TextStyle(false));
}

TEST(TreeLine, StaysWholeWhereItFits) {
    EXPECT_EQ(fitted(78), "+-00.0  {TAV1: Long Model Name}  {TAV1 port \"A long label\"}  "
                          "Maker Device Name");
}

TEST(TreeLine, CutsTheFunctionsNameFirstThenTheModelAndNeverALabel) {
    EXPECT_EQ(fitted(72), "+-00.0  {TAV1: Long Model Name}  {TAV1 port \"A long label\"}  "
                          "Make...Name");
    EXPECT_EQ(fitted(64), "+-00.0  {TAV1: Long...ame}  {TAV1 port \"A long label\"}  Mak...me");
    EXPECT_EQ(fitted(1), "+-00.0  {TAV1: Lon...me}  {TAV1 port \"A long label\"}  Mak...me");
}

TEST(TreeLine, ColoursCountNothing) {
    TreeLine line("x");
    line.add(TreeLine::Dress::warning, "warn");
    EXPECT_EQ(line.text(7, TextStyle(true)), "x  \033[1;33mwarn\033[0m");
}

} // namespace
