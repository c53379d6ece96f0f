// Reading a bus from where it stands.
#pragma once

#include "pcibus/bus.h"
#include "pcibus/leftOut.h"

#include <optional>
#include <string>

namespace tavctl {

// A bus, and what its reader did not take into it.
struct ReadBus {
    pcibus::Bus bus;
    std::optional<pcibus::LeftOut> leftOut; // nothing: not known
};

// The bus at a UTF-8 path: a dump, or a folder that stands for /sys (see pcibus/readBus.h). `sink`
// is given each function. Raises FailureException.
ReadBus readBusFile(const std::string& location);

} // namespace tavctl
