#include "tavctl/description/findings.h"

#include "tavctl/description/rules.h"

#include <algorithm>
#include <utility>

namespace tavctl::lint {

void Findings::add(std::string_view id, const Place& place, std::string found, std::string expected,
                   bool endsLoad) {
    const Rule& broken = rule(id);
    findings_.push_back({broken.id, broken.severity, description_.path(), place,
                         description_.text().textAt(place), std::move(found), std::move(expected),
                         endsLoad});
}

std::vector<Finding> Findings::sorted() && {
    std::stable_sort(findings_.begin(), findings_.end(), [](const Finding& a, const Finding& b) {
        return std::pair(a.place.line, a.place.column) < std::pair(b.place.line, b.place.column);
    });
    return std::move(findings_);
}

} // namespace tavctl::lint
