// The PCI devices of this machine.
#pragma once

#include "platform/pciDevices.h"

#include <memory>

namespace machine {

// The devices that the system lists, where it does; elsewhere, or where a recorded bus stands for
// them, the functions of the bus: what a PCI bus driver publishes elsewhere is told from the bus
// itself, which is found and read by the first open(). Raises std::bad_alloc.
std::unique_ptr<platform::PciDevices> makePciDevices();

} // namespace machine
