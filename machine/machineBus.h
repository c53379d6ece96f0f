// The PCI bus of this machine, or the recorded one that stands for it.
#pragma once

#include "pcibus/bus.h"
#include "platform/systemCode.h"

#include <memory>
#include <string>

namespace machine {

struct MachineBus {
    std::string location; // UTF-8: a dump file, or a folder that stands for /sys
    pcibus::Bus bus;
};

// 0 with `result` set; or why the bus cannot be read: the code of the system for a location that
// cannot be opened, platform::malformedDataCode() for one whose content is no bus.
platform::SystemCode readMachineBus(const std::string& location,
                                    std::shared_ptr<const MachineBus>& result);

} // namespace machine
