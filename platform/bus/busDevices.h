// Devices, and their tree, as a bus at hand has them: what a PCI bus driver publishes elsewhere is
// told from the bus itself.
#pragma once

#include "platform/pciDevices.h"

#include <memory>
#include <optional>
#include <string>

namespace platform {

// Tells a dump file, or a folder that stands for /sys.
using BusLocator = std::optional<std::string> (*)();

// The functions of the bus that `locate` tells, which is asked and read by the first open(); while
// there is none, open() fails. Raises std::bad_alloc.
std::unique_ptr<PciDevices> makeBusDevices(BusLocator locate);

} // namespace platform
