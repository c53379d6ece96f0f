#include "tavctl/words/textTable.h"

#include "tavctl/words/characters.h"
#include "tavctl/words/printable.h"

#include <algorithm>
#include <numeric>

namespace tavctl {

namespace {

constexpr std::size_t kGap = 2;

std::vector<std::size_t> columnWidths(const std::vector<TableRow>& rows) {
    std::vector<std::size_t> widths(rows.empty() ? 0 : rows.front().size());
    for (const TableRow& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], characterCount(row[i]));
    }
    return widths;
}

} // namespace

std::string fitText(std::string_view text, std::size_t width) {
    constexpr std::string_view kCut = "...";
    if (characterCount(text) <= width)
        return std::string(text);
    const std::size_t room = width - std::min(width, kCut.size());
    return std::string(firstCharacters(text, room)).append(kCut);
}

std::vector<std::string> tableLines(std::vector<TableRow> rows,
                                    const std::vector<std::size_t>& cutFirst, std::size_t width) {
    for (TableRow& row : rows) {
        for (std::string& cell : row)
            cell = printable(cell);
    }
    std::vector<std::size_t> widths = columnWidths(rows);
    std::size_t total = std::accumulate(widths.begin(), widths.end(), std::size_t{0}) +
                        kGap * (widths.empty() ? 0 : widths.size() - 1);
    for (const std::size_t column : cutFirst) {
        if (total <= width || widths[column] <= kNarrowestColumn)
            continue;
        const std::size_t cut = std::min(total - width, widths[column] - kNarrowestColumn);
        widths[column] -= cut;
        total -= cut;
        for (TableRow& row : rows)
            row[column] = fitText(row[column], widths[column]);
    }
    std::vector<std::string> lines;
    for (const TableRow& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += row[i];
            if (i + 1 < row.size())
                line.append(widths[i] - characterCount(row[i]) + kGap, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        lines.push_back(std::move(line));
    }
    return lines;
}

} // namespace tavctl
