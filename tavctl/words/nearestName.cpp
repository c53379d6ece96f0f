#include "tavctl/words/nearestName.h"

#include <algorithm>

namespace tavctl {

namespace {

char small(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool same(char a, char b) {
    return small(a) == small(b);
}

} // namespace

std::size_t editDistance(std::string_view a, std::string_view b) {
    // Three rows of the table whose element [i][j] is the distance of the first i letters of `a`
    // from the first j letters of `b`.
    std::vector<std::size_t> beforeLast(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        last[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (same(a[i - 1], b[j - 1]) ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            if (i > 1 && j > 1 && same(a[i - 1], b[j - 2]) && same(a[i - 2], b[j - 1]))
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        beforeLast.swap(last);
        last.swap(row);
    }
    return last[b.size()];
}

std::string nearestName(std::string_view word, const std::vector<std::string>& names) {
    const std::string* nearest = nullptr;
    std::size_t distance = std::max<std::size_t>(word.size() / 3, 1) + 1;
    for (const std::string& name : names) {
        const std::size_t here = editDistance(word, name);
        if (here < distance && here < name.size()) {
            nearest = &name;
            distance = here;
        }
    }
    return nearest ? *nearest : std::string();
}

} // namespace tavctl
