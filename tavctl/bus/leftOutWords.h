// What the reader of a bus passed over, told: nothing is left out silently.
#pragma once

#include "pcibus/leftOut.h"
#include "tavctl/words/json.h"

#include <optional>
#include <string>

namespace tavctl {

// "left out: 36 functions of other domains, 2 that do not answer (vendor FFFF), 1 that cannot be
// read; of 12 only the header is known", as far as there is something of the kind; empty when there
// is nothing. `where` comes behind "left out": " of FILE".
std::string leftOutText(const pcibus::LeftOut& leftOut, const std::string& where = {});

// Says that on standard error, if there is something to say. A command does so once.
void tellLeftOut(const std::optional<pcibus::LeftOut>& leftOut, const std::string& where = {});

// All four counts, zeros too; null when they are not known.
Json leftOutJson(const std::optional<pcibus::LeftOut>& leftOut);

} // namespace tavctl
