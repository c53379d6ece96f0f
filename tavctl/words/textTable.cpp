#include "tavctl/words/textTable.h"

#include "tavctl/words/characters.h"
#include "tavctl/words/printable.h"

#include <fmt/core.h>

#include <algorithm>
#include <numeric>
#include <utility>

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
    const std::size_t count = characterCount(text);
    if (count <= width)
        return std::string(text);
    const std::size_t room = width - std::min(width, kCut.size());
    const std::size_t atEnd = room / 2;
    const std::string_view front = firstCharacters(text, room - atEnd);
    const std::string_view beforeEnd = firstCharacters(text, count - atEnd);
    return std::string(front).append(kCut).append(text.substr(beforeEnd.size()));
}

std::string fitItems(std::string_view list, std::size_t width) {
    if (characterCount(list) <= width)
        return std::string(list);
    const auto itemsIn = [](std::string_view text) {
        return 1 + static_cast<std::size_t>(std::count(text.begin(), text.end(), ','));
    };
    std::string best = fmt::format("+{}", itemsIn(list));
    for (std::size_t end = list.find(','); end != std::string_view::npos;
         end = list.find(',', end + 1)) {
        std::string shorter =
            fmt::format("{},+{}", list.substr(0, end), itemsIn(list.substr(end + 1)));
        if (characterCount(shorter) > width)
            break;
        best = std::move(shorter);
    }
    return best;
}

std::vector<std::string> tableLines(std::vector<TableRow> rows,
                                    const std::vector<ColumnCut>& cutFirst, std::size_t width) {
    for (TableRow& row : rows) {
        for (std::string& cell : row)
            cell = printable(cell);
    }
    std::vector<std::size_t> widths = columnWidths(rows);
    std::size_t total = std::accumulate(widths.begin(), widths.end(), std::size_t{0}) +
                        kGap * (widths.empty() ? 0 : widths.size() - 1);
    for (const auto& [column, fit] : cutFirst) {
        if (total <= width || widths[column] <= kNarrowestColumn)
            continue;
        const std::size_t cut = std::min(total - width, widths[column] - kNarrowestColumn);
        widths[column] -= cut;
        total -= cut;
        for (TableRow& row : rows)
            row[column] = fit(row[column], widths[column]);
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
