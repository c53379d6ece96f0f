// Reads what is published of one enumerated device.
#pragma once

#include "platform/pciDevices.h"
#include "quil/slotPathDerivation.h"
#include "quil/tErrorStatus.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace nZoTavManagerPciPlugin_15_0 {

// One device of a list; good as long as the list is open and the device in it.
struct tEnumeratedDevice {
    platform::PciDevices& devices;
    std::size_t index = 0;
    std::optional<DerivedSlotPath> slotPath = std::nullopt; // made by the first request for it
};

inline constexpr const char* kSlotPathProperty = "pciSlotPath";

// Reads a property of at most four bytes. kSlotPathProperty is answered by the derivation and its
// hand-out; any other name by what the bus driver has published, which fills the buffer with a
// 32-bit number. On failure the status says why and the buffer is as it was. Does nothing when the
// status is negative already. Raises std::bad_alloc only.
void readProperty(tEnumeratedDevice& device, const char* name, tPropertyBuffer& value,
                  nZOQUIL000::tErrorStatus& status);

// The same as a number; 0 on failure.
std::uint32_t readNumber(tEnumeratedDevice& device, const char* name,
                         nZOQUIL000::tErrorStatus& status);

} // namespace nZoTavManagerPciPlugin_15_0
