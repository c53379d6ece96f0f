// The devices that the system lists as present, each with the values that its PCI bus driver
// publishes for it.
#pragma once

#include "platform/deviceTree.h"
#include "platform/pciIds.h"
#include "platform/systemCode.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace platform {

// What reading one published value came to.
struct PropertyRead {
    // How far the read got; the code belongs to the step that failed.
    enum class Step { hardwareKey, busProperties, value, done };
    Step step = Step::done;
    SystemCode code = kNoSystemError;
    bool tooLong = false; // with Step::value: the value is longer than four bytes
    std::uint32_t value = 0;
};

// What "busType" reads for a device on a PCI bus: "PCI " as four bytes.
inline constexpr std::uint32_t kPciBusType = 0x20706369;

// One enumeration of devices. Tests put their own behind it.
class PciDevices {
public:
    virtual ~PciDevices() = default;

    // Builds the list of all present devices; what was listed before is given up.
    virtual SystemCode open() = 0;

    // True while there is a device at this position, counted from 0 in enumeration order.
    virtual bool has(std::size_t index) = 0;

    // The first position from `index` on whose device has to be asked whether it has these
    // identifiers. Only a list that knows the answer for others passes over them.
    virtual std::size_t nextToAsk(std::size_t index, const PciIds& /*sought*/) { return index; }

    // Reads the four-byte value `name` published for a device ("busType", "pciVendorID" and so on),
    // opening and closing whatever holds it.
    virtual PropertyRead readProperty(std::size_t index, const char* name) = 0;

    // The tree of devices, and the place in it of a listed device; null, with `node` untouched,
    // when it has none. Both are good until the list is given up. Raises std::bad_alloc.
    virtual DeviceTree* locate(std::size_t index, DeviceNode& node) = 0;

    // Gives the list up.
    virtual void close() noexcept = 0;
};

// The devices that the system itself lists; null on a system that lists none, and while the
// functions of a recorded bus stand for them (see deviceBusLocation()). Raises std::bad_alloc.
std::unique_ptr<PciDevices> makeSystemDevices();

} // namespace platform
