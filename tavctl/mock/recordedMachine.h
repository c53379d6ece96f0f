// A recorded bus as a machine that boxes are added to.
#pragma once

#include "pcibus/bus.h"
#include "tavctl/mock/machine.h"

#include <memory>
#include <string>

namespace tavctl::mock {

struct RecordedMachine {
    Machine machine;
    std::shared_ptr<const pcibus::Bus> bus; // as it was recorded
};

// Reads the bus at a UTF-8 path. Raises FailureException.
RecordedMachine readRecordedMachine(const std::string& location);

} // namespace tavctl::mock
