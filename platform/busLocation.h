// Where the PCI bus that this process sees is to be read from.
#pragma once

#include <optional>
#include <string>

namespace platform {

// The recorded bus that the environment names with TAV_PCI_DUMP (a dump file, or a folder that
// stands for the root of sysfs); without it the root of the live bus, or nothing on a system that
// publishes none. The environment is not asked in a process with raised privileges.
std::optional<std::string> busLocation();

// Whether that is a recorded bus rather than the machine's own.
bool isBusRecorded();

// Where the bus is read whose functions are the devices of this machine: busLocation() on a system
// that lists no devices of its own; elsewhere the recorded bus that this process itself has put in
// their place with useRecordedBus(), or nothing.
std::optional<std::string> deviceBusLocation();

} // namespace platform
