// One function of a bus in the form of lspci -xxx, which --dump and lspci -F read.
#pragma once

#include "pcibus/pciFunction.h"

#include <cstdint>
#include <span>
#include <string>

namespace tavctl {

// Appends the line of the function, with its address as given, the rows of its configuration space
// and the blank line that ends it. `bytes` are the first ones, at least a header.
void appendDumpFunction(std::string& text, const std::string& address,
                        const pcibus::PciFunction& function, std::span<const std::uint8_t> bytes);

} // namespace tavctl
