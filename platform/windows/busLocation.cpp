#include "platform/busLocation.h"

#include "platform/windows/environmentVariable.h"
#include "platform/windows/hostVariable.h"

namespace platform {

// The system publishes no tree of configuration spaces.
std::optional<std::string> busLocation() {
    return environmentVariable(kRecordedBusVariable);
}

bool isBusRecorded() {
    return environmentVariable(kRecordedBusVariable) || hostVariable(kHostPciFunctions);
}

std::optional<std::string> deviceBusLocation() {
    return hostVariable(kHostPciFunctions);
}

} // namespace platform
