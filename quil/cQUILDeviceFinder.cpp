#include "quil/cQUILDeviceFinder.h"

#include "quil/systemStatus.h"
#include "quil/zoerr.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace nZoTavManagerPciPlugin_15_0 {

namespace {

using nZOQUIL000::tErrorSite;
using nZOQUIL000::tErrorStatus;

// The place that error records name.
constexpr tErrorSite kListSite{"zoquil\\protons\\enumeration\\windows\\tdeviceiterator", 41,
                               nZOQUIL000::kComponent, "status"};

// Gives the list up whichever way the search ends.
class ListCloser {
public:
    explicit ListCloser(platform::PciDevices& devices) noexcept : devices_(devices) {}
    ~ListCloser() { devices_.close(); }
    ListCloser(const ListCloser&) = delete;
    ListCloser& operator=(const ListCloser&) = delete;

private:
    platform::PciDevices& devices_;
};

// A device that does not say is none; what kept it from saying is of no interest.
bool isPci(tEnumeratedDevice& device) {
    tErrorStatus status;
    const std::uint32_t busType = readNumber(device, "busType", status);
    return !status.failed() && busType == platform::kPciBusType;
}

// One number of a device and the field that it goes into; fields are narrower than numbers.
template <typename Field>
struct Reading {
    const char* name;
    Field& field;
};

// Nothing is read after a failure.
template <typename Field, std::size_t Count>
void readAll(tEnumeratedDevice& device, const Reading<Field> (&readings)[Count]) {
    tErrorStatus status;
    for (const Reading<Field>& reading : readings) {
        const std::uint32_t number = readNumber(device, reading.name, status);
        if (status.failed())
            break;
        reading.field = static_cast<Field>(number);
    }
    zoerr::raiseIfFailed(status);
}

} // namespace

cQUILDeviceFinder::cQUILDeviceFinder() : cQUILDeviceFinder(machine::makePciDevices()) {}

cQUILDeviceFinder::cQUILDeviceFinder(machine::ReadAlready readAlready)
    : cQUILDeviceFinder(machine::makePciDevices(std::move(readAlready))) {}

cQUILDeviceFinder::cQUILDeviceFinder(std::unique_ptr<platform::PciDevices> devices)
    : devices_(std::move(devices)) {}

void cQUILDeviceFinder::FindByPciIds(const tPciIds& ids, std::vector<tBusAddress>& addresses) {
    tErrorStatus status;
    if (nZOQUIL000::setSystemError(status, devices_->open(), kListSite))
        return zoerr::raiseIfFailed(status);
    const ListCloser closer(*devices_);
    const auto next = [&](std::size_t index) { return devices_->nextToAsk(index, ids); };
    for (std::size_t index = next(0); devices_->has(index); index = next(index + 1)) {
        tEnumeratedDevice device{*devices_, index};
        if (!isPci(device))
            continue;
        tPciIds found;
        ReadPciIds(device, found);
        if (found != ids)
            continue;
        tBusAddress address;
        ReadBusAddress(device, address);
        addresses.push_back(address);
    }
}

void cQUILDeviceFinder::ReadPciIds(tEnumeratedDevice& device, tPciIds& ids) {
    readAll<std::uint16_t>(device, {{"pciVendorID", ids.vendor},
                                    {"pciDeviceID", ids.device},
                                    {"pciSubsystemVendorID", ids.subsystemVendor},
                                    {"pciSubsystemID", ids.subsystem}});
}

void cQUILDeviceFinder::ReadBusAddress(tEnumeratedDevice& device, tBusAddress& address) {
    readAll<std::uint8_t>(device, {{"pciBusNumber", address.bus},
                                   {"pciDeviceNumber", address.device},
                                   {"pciFunctionNumber", address.function}});
}

} // namespace nZoTavManagerPciPlugin_15_0
