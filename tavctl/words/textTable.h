// Text in columns, for people.
#pragma once

#include "tavctl/words/screenWidth.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tavctl {

// The text, or as much of its front and its end as leaves room for "..." between them within
// `width` characters: names that differ often do so at their ends.
std::string fitText(std::string_view text, std::size_t width);

// A list "A,B,C", or as many of its items, whole, as leave room for how many more there are:
// "A,+2". When there is no room for any, that number alone.
std::string fitItems(std::string_view list, std::size_t width);

// Every row has as many cells as the first one, the headings.
using TableRow = std::vector<std::string>;

// A column that is made narrower when lines would be too long.
struct ColumnCut {
    std::size_t column = 0;
    std::string (*fit)(std::string_view text, std::size_t width) = fitText;
};

// A line for each row, columns two blanks apart, the last one not filled up. When the lines would
// be longer than `width`, columns are cut in the order of `cutFirst`, none to less than
// kNarrowestColumn.
inline constexpr std::size_t kNarrowestColumn = 8;
std::vector<std::string> tableLines(std::vector<TableRow> rows,
                                    const std::vector<ColumnCut>& cutFirst = {},
                                    std::size_t width = kUnbounded);

} // namespace tavctl
