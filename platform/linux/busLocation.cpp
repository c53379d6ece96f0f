#include "platform/busLocation.h"

#include "platform/linux/environmentVariable.h"

#include <cstdlib>

namespace platform {

namespace {

// Null when there is none.
const char* recordedBus() {
    const char* const recorded = secure_getenv(kRecordedBusVariable);
    return recorded != nullptr && *recorded != '\0' ? recorded : nullptr;
}

} // namespace

std::optional<std::string> busLocation() {
    return isBusRecorded() ? recordedBus() : "/sys";
}

bool isBusRecorded() {
    return recordedBus() != nullptr;
}

std::optional<std::string> deviceBusLocation() {
    return busLocation();
}

} // namespace platform
