// Slot paths as text, to and from bridges of a bus.
#pragma once

#include "pcibus/bus.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace zopcibrd {

// Both answer a status of zopcibrd.h and write their output only with 0. Raise std::bad_alloc.

std::int32_t findBridgeBySlotPath(const pcibus::Bus& bus, std::string_view text,
                                  std::uint32_t& bridge);

std::int32_t slotPathOf(const pcibus::Bus& bus, const pcibus::PciFunction& bridge,
                        std::string& text);

} // namespace zopcibrd
