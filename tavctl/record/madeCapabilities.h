// Puts capabilities into a function's configuration space that say what is known of it from
// elsewhere.
#pragma once

#include "pcibus/link.h"
#include "pcibus/pciFunction.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace tavctl {

// Of `bytes`, the header of the function (64 bytes or more), only the header stays. Behind it come
// a PCI Express capability with the link and, of a bridge, a subsystem capability, as far as the
// function has them, where the header's pointer says that the first one is. The header is changed
// only when it says that there are no capabilities. Answers where the made bytes begin and end; 0
// and 0, and 64 bytes left, when nothing had to be made.
std::pair<std::size_t, std::size_t> makeCapabilities(const pcibus::PciFunction& function,
                                                     const pcibus::Link& link,
                                                     std::vector<std::uint8_t>& bytes);

} // namespace tavctl
