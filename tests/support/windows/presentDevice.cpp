#include "tests/support/windows/presentDevice.h"

#include <array>
#include <cstdio>

namespace testsupport {

RegistryTree makePresentDevice(const std::string& name) {
    RegistryTree device("SYSTEM\\CurrentControlSet\\Enum\\PCI\\" + name, 0);
    device.set(kInstance, "ClassGUID", REG_SZ, "{4D36E97D-E325-11CE-BFC1-08002BE10318}");
    device.set(kInstance, "HardwareID", REG_MULTI_SZ, std::string("PCI\\TEST\0", 9));
    return device;
}

RegistryTree makePresentDevice(const pcibus::PciFunction& function) {
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "TAVTEST_%05X", function.handle());
    RegistryTree device = makePresentDevice(std::string(name.data()));
    constexpr std::uint32_t kPci = 0x20706369;
    device.setNumber(kBusProperties, "busType", kPci);
    device.setNumber(kBusProperties, "pciVendorID", function.vendorId);
    device.setNumber(kBusProperties, "pciDeviceID", function.deviceId);
    device.setNumber(kBusProperties, "pciSubsystemVendorID", function.subsystemVendorId);
    device.setNumber(kBusProperties, "pciSubsystemID", function.subsystemId);
    device.setNumber(kBusProperties, "pciBusNumber", function.bus);
    device.setNumber(kBusProperties, "pciDeviceNumber", function.device);
    device.setNumber(kBusProperties, "pciFunctionNumber", function.function);
    return device;
}

} // namespace testsupport
