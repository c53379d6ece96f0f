// What is told when a bus cannot be read.
#pragma once

#include "tavctl/words/failure.h"

#include <string>

namespace tavctl {

// The failure to read the bus at this place, with the reason that the reading gave.
[[nodiscard]] Failure busFailure(const std::string& location, std::string reason);

// What helps whoever names a folder that stands for no /sys where one bus is to be read: there may
// be recordings in it. Empty for any other place.
[[nodiscard]] std::string hintForFolder(const std::string& location);

} // namespace tavctl
