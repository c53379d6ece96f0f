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
    // Asks for the link of a function of any kind. It may be kept and asked later, by one thread at
    // a time: sysfs is read when it is asked, four files for each function, and most links nobody
    // wants to know.
    std::function<Link()> link;
};

// Is given each function that answers. The bus will have those of domain 0. What it is given is
// good until it returns; only what asks for the link may be kept.
using FunctionSink = std::function<void(const SeenFunction&)>;

} // namespace pcibus
