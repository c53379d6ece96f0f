#include "platform/deviceTree.h"

#include "pcibus/pciFunction.h"
#include "platform/bus/busTree.h"
#include "platform/busLocation.h"

#include <new>

namespace platform {

// A bus that cannot be read makes a tree in which nothing is found.
std::unique_ptr<DeviceTree> makeDeviceTree() {
    std::shared_ptr<const MachineBus> machine;
    if (const auto location = busLocation()) {
        if (isOutOfMemory(readMachineBus(*location, machine)))
            throw std::bad_alloc();
    }
    return std::make_unique<BusTree>(machine);
}

bool findPciFunction(DeviceTree& tree, std::uint8_t bus, std::uint8_t device, std::uint8_t function,
                     DeviceNode& result) {
    pcibus::PciFunction sought;
    sought.bus = bus;
    sought.device = device;
    sought.function = function;
    return tree.open(BusTree::identifierOf(sought).c_str(), result);
}

} // namespace platform
