// For whoever wants more of the functions than a Bus has: their bytes, and other domains.
#pragma once

#include "pcibus/pciFunction.h"

#include <cstdint>
#include <functional>
#include <span>

namespace pcibus {

// Is given each function that answers, with its domain and the first bytes of its configuration
// space: as many as there are of a dump, up to 256 of those that a folder's "config" has. The bus
// will have those of domain 0. The bytes are good until it returns.
using FunctionSink =
    std::function<void(std::uint32_t domain, const PciFunction&, std::span<const std::uint8_t>)>;

} // namespace pcibus
