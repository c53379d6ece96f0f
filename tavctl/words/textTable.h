// Text in columns, for people.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tavctl {

// What fits a terminal of the usual width.
inline constexpr std::size_t kScreenWidth = 80;

// The text, or as much of its front as leaves room for a closing "..." within `width` columns.
std::string fitText(std::string_view text, std::size_t width);

// Every row has as many cells as the first one, the headings.
using TableRow = std::vector<std::string>;

// A line for each row, columns two blanks apart, the last one not filled up. When the lines would
// be longer than `width`, columns are cut in the order of `cutFirst` (numbers of columns), none to
// less than kNarrowestColumn.
inline constexpr std::size_t kNarrowestColumn = 8;
std::vector<std::string> tableLines(std::vector<TableRow> rows,
                                    const std::vector<std::size_t>& cutFirst,
                                    std::size_t width = kScreenWidth);

} // namespace tavctl
