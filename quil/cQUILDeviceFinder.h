// The device finder over what the PCI bus driver has published of each device; configuration space
// is not read. One thread at a time.
#pragma once

#include "machine/machineDevices.h"
#include "platform/pciDevices.h"
#include "quil/iQUILDeviceFinder.h"

#include <memory>
#include <vector>

namespace nZoTavManagerPciPlugin_15_0 {

class cQUILDeviceFinder : public iQUILDeviceFinder {
public:
    // Over the devices of this system. Raises std::bad_alloc.
    cQUILDeviceFinder();

    // The same, but where the bus itself tells the devices and `readAlready` has its functions, of
    // these. It must outlive the finder.
    explicit cQUILDeviceFinder(machine::ReadAlready readAlready);

    // Over other devices; not null.
    explicit cQUILDeviceFinder(std::unique_ptr<platform::PciDevices> devices);

    // Passes over devices that are not PCI or publish nothing. Raises zoerr::Exception when the
    // list of devices cannot be built or a PCI device does not tell its numbers, and
    // std::bad_alloc; addresses appended before stay.
    void FindByPciIds(const tPciIds& ids, std::vector<tBusAddress>& addresses) override;

    void ReadPciIds(tEnumeratedDevice& device, tPciIds& ids) override;
    void ReadBusAddress(tEnumeratedDevice& device, tBusAddress& address) override;

private:
    std::unique_ptr<platform::PciDevices> devices_;
};

} // namespace nZoTavManagerPciPlugin_15_0
