// Files that are no descriptions by their size alone. The plug-in loads them if there is room.
#include "tavctl/lint/checks.h"

#include <fmt/core.h>

namespace tavctl::lint {

void checkSize(const Description& description, Findings& findings) {
    if (description.isTooLarge())
        findings.add("too-large", {},
                     fmt::format("the file has more than {} bytes, all of which the plug-in reads "
                                 "at each start; its lines are not checked",
                                 Description::kLargestText),
                     "a description, which has some thousand bytes");
}

} // namespace tavctl::lint
