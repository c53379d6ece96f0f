// Functions as text, so that whole buses compare in one assertion that shows the difference.
#pragma once

#include "pcibus/leftOut.h"
#include "pcibus/pciFunction.h"

#include <span>
#include <string>
#include <vector>

namespace testsupport {

// "00:1c.0 type 1 8086:a110 subsystem 1234:0001 secondary 01 link x4 speed 2"
std::string describe(const pcibus::PciFunction& function);
std::vector<std::string> describe(std::span<const pcibus::PciFunction> functions);

// "dead 1, headerOnly 3": the counts that are not 0; "nothing" without one.
std::string describe(const pcibus::LeftOut& leftOut);

} // namespace testsupport
