#include "tavctl/description/finding.h"

#include "tavctl/words/words.h"

#include <fmt/core.h>

namespace tavctl::lint {

std::string Finding::placeText() const {
    std::string where = file;
    for (const int number : {place.line, place.column}) {
        if (number == 0)
            break;
        where += fmt::format(":{}", number);
    }
    return where;
}

std::string Finding::sentence() const {
    return fmt::format("{}; expected {}", found, expected);
}

} // namespace tavctl::lint
