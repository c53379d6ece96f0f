#include "platform/pciDevices.h"

#include "platform/bus/busDevices.h"
#include "platform/busLocation.h"

namespace platform {

// The kernel shows the bus itself rather than a driver's account of it.
std::unique_ptr<PciDevices> makePciDevices() {
    return makeBusDevices(&busLocation);
}

} // namespace platform
