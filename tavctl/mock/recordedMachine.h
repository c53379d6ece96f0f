// A recorded bus as a machine that boxes are added to.
#pragma once

#include "pcibus/bus.h"
#include "pcibus/link.h"
#include "pcibus/pciFunction.h"
#include "tavctl/mock/machine.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tavctl::mock {

struct RecordedFunction {
    pcibus::PciFunction function;
    pcibus::Link link;
    std::vector<std::uint8_t> bytes;
};

struct RecordedMachine {
    std::shared_ptr<const pcibus::Bus> bus;              // as the plug-in sees it
    std::map<std::uint32_t, RecordedFunction> functions; // of domain 0, by handle
    std::vector<std::string> otherDomains;               // as they stand in a dump
};

// Reads the bus at a UTF-8 path, and tells of what is left out. Raises FailureException.
RecordedMachine readRecordedMachine(const std::string& location);

// The machine as it was recorded, to add boxes to.
Machine machineOf(const RecordedMachine& recorded);

} // namespace tavctl::mock
