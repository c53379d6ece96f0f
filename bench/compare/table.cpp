#include "bench/compare/table.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace bench {

namespace {

std::string withUnit(double value, const char* unit) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), value < 10 ? "%.2f %s" : "%.1f %s", value, unit);
    return text.data();
}

std::string ratioText(double ratio) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.2f", ratio);
    return text.data();
}

} // namespace

std::string timeText(double seconds) {
    if (seconds < 1e-6)
        return withUnit(seconds * 1e9, "ns");
    if (seconds < 1e-3)
        return withUnit(seconds * 1e6, "us");
    return withUnit(seconds * 1e3, "ms");
}

std::string memoryText(double bytes) {
    return bytes < 1e6 ? withUnit(bytes / 1e3, "kB") : withUnit(bytes / 1e6, "MB");
}

void printTable(const std::vector<Row>& rows) {
    std::vector<std::array<std::string, 6>> lines = {
        {"what", "ours", "best peer", "ratio", "target", "limit"}};
    for (const Row& row : rows)
        lines.push_back({row.what, row.ours, row.peer,
                         row.ratio != 0 ? ratioText(row.ratio) : std::string(),
                         row.target != 0 ? ratioText(row.target) : std::string(), row.limit});
    std::array<std::size_t, 6> widths{};
    for (const auto& line : lines)
        for (std::size_t column = 0; column < line.size(); ++column)
            widths[column] = std::max(widths[column], line[column].size());
    for (const auto& line : lines) {
        for (std::size_t column = 0; column < line.size(); ++column) {
            const bool isNumber = column == 3 || column == 4;
            const int width = static_cast<int>(widths[column]);
            std::printf("%s%*s", column == 0 ? "" : "  ", isNumber ? width : -width,
                        line[column].c_str());
        }
        std::printf("\n");
    }
}

} // namespace bench
