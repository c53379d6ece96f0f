// A made-up machine as options of QEMU, which then is that machine.
#pragma once

#include "tavctl/mock/machine.h"

#include <string>
#include <vector>

namespace tavctl::mock {

// One option a line, for QEMU's machine q35. The firmware of that machine numbers the buses, and
// the links run as QEMU has it. Comments are lines without the "#". Raises FailureException for
// what QEMU has no device for.
std::string qemuOptions(const Machine& machine, const std::vector<std::string>& comments);

} // namespace tavctl::mock
