#include "tavctl/bus/busFailure.h"

#include "tavctl/bus/busFolder.h"

#include <utility>

namespace tavctl {

std::string hintForFolder(const std::string& location) {
    if (!isFolder(location) || standsForSys(location))
        return {};
    return "one recording in it can be named; list, names preview, lint --against and report take "
           "a whole folder";
}

Failure busFailure(const std::string& location, std::string reason) {
    return {"read the bus", location, std::move(reason), {}, {}, hintForFolder(location)};
}

} // namespace tavctl
