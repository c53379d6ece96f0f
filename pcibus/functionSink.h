// For whoever wants more of the functions than a Bus has: their bytes, their links, and other
// domains.
#pragma once

#include "pcibus/link.h"
#include "pcibus/pciFunction.h"

#include <cstdint>
#include <functional>
#include <span>

namespace pcibus {

struct SeenFunction {
    std::uint32_t domain = 0;
    const PciFunction& function;
    // The first ones of the configuration space: as many as there are of a dump, up to 256 of those
    // that a folder's "config" has.
    std::span<const std::uint8_t> bytes;
    Link link; // of a function of any kind
};

// Is given each function that answers. The bus will have those of domain 0. What it is given is
// good until it returns.
using FunctionSink = std::function<void(const SeenFunction&)>;

} // namespace pcibus
