// Reading a bus from where it stands.
#pragma once

#include "pcibus/bus.h"

#include <string>

namespace tavctl {

// The bus at a UTF-8 path: a dump, or a folder that stands for /sys (see pcibus/readBus.h). Raises
// FailureException.
pcibus::Bus readBusFile(const std::string& location);

} // namespace tavctl
