// The four identifiers of a PCI function, by the name that the plug-in's interfaces give them.
#pragma once

#include "platform/pciIds.h"

namespace nZoTavManagerPciPlugin_15_0 {

using tPciIds = platform::PciIds;

} // namespace nZoTavManagerPciPlugin_15_0
