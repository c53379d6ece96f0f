// A made-up machine as the text that lspci -xxx prints.
#pragma once

#include "tavctl/mock/machine.h"

#include <string>
#include <vector>

namespace tavctl::mock {

// Brings both ends of each link together, puts a function 0 where a device has others only, and
// sets aside how links run that are not as recorded.
void settle(Machine& machine, const nZoTavManagerPciPlugin_15_0::tPciIds& standIn);

// Its buses are numbered, and it is settled. Comments are lines without the "#".
std::string machineText(const Machine& machine, const std::vector<std::string>& comments);

} // namespace tavctl::mock
