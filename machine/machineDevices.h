// The PCI devices of this machine.
#pragma once

#include "pcibus/pciFunction.h"
#include "platform/pciDevices.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace machine {

// The functions of the bus where somebody has read it already; nothing where nobody has. May raise
// std::bad_alloc.
using ReadAlready = std::function<std::optional<std::vector<pcibus::PciFunction>>()>;

// The devices that the system lists, where it does; elsewhere, or where a recorded bus stands for
// them, the functions of the bus: what a PCI bus driver publishes elsewhere is told from the bus
// itself, which is found and read by the first open(). `readAlready` is asked first, where the bus
// is the one that bridges are looked for on (platform::busLocation()); it must outlive the devices.
// Raises std::bad_alloc.
std::unique_ptr<platform::PciDevices> makePciDevices(ReadAlready readAlready = {});

} // namespace machine
