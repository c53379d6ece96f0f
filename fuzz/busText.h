// A bus in short: what a fuzzer can change in a few bytes and a reader can read. One function a
// line, everything but the address optional:
//
//   02:00.0 104c:8233 0000:0000 >03 x4 g1
//
// address, vendor and device, subsystem, then of a bridge the bus below, the link's width and its
// speed; "h2" makes another header type. Numbers are hexadecimal. A line without an address means
// nothing.
#pragma once

#include "pcibus/pciFunction.h"

#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

// The functions, in the order of the text, with what a dump of them says: the line is that of the
// dump.
std::vector<pcibus::PciFunction> readBusText(std::string_view text);

// The functions as lspci -xxx prints them.
std::string dumpOf(const std::vector<pcibus::PciFunction>& functions);

} // namespace fuzz
