// Puts capabilities into a bridge's configuration space that say what is known of the bridge from
// elsewhere.
#pragma once

#include "pcibus/pciFunction.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace tavctl {

// Of `bytes`, the header of the bridge (64 bytes or more), only the header stays. Behind it come a
// PCI Express capability with the link's width and speed and a subsystem capability, as far as the
// bridge has them, where the header's pointer says that the first one is. The header is changed
// only when it says that there are no capabilities. Answers where the made bytes begin and end; 0
// and 0, and 64 bytes left, when nothing had to be made.
std::pair<std::size_t, std::size_t> makeCapabilities(const pcibus::PciFunction& bridge,
                                                     std::vector<std::uint8_t>& bytes);

} // namespace tavctl
