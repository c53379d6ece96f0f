// A device that the system lists as present, as a PCI bus driver would have entered it.
#pragma once

#include "pcibus/pciFunction.h"
#include "tests/support/windows/registryTree.h"

#include <string>

namespace testsupport {

// The one instance of the device, its hardware key, and the key of the values that the PCI bus
// driver publishes; below the device's own key.
inline constexpr const char* kInstance = "0";
inline constexpr const char* kHardwareKey = "0\\Device Parameters";
inline constexpr const char* kBusProperties = "0\\Device Parameters\\BusProperties";

// The key of a present device of the enumerator "PCI". Devices are enumerated in the order of
// `name`, which stands for the device's identifier.
RegistryTree makePresentDevice(const std::string& name);

// The same with the values of a function.
RegistryTree makePresentDevice(const pcibus::PciFunction& function);

} // namespace testsupport
