#include "tavctl/description/finding.h"

#include "tavctl/words/words.h"

namespace tavctl::lint {

std::string Finding::placeText() const {
    std::string where = file;
    for (const int number : {place.line, place.column}) {
        if (number == 0)
            break;
        where.append(":").append(std::to_string(number));
    }
    return where;
}

std::string Finding::sentence() const {
    return join({found, "; expected ", expected});
}

} // namespace tavctl::lint
