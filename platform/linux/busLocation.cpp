#include "platform/busLocation.h"

#include "platform/linux/environmentVariable.h"

#include <cstdlib>

namespace platform {

std::optional<std::string> busLocation() {
    const char* const recorded = secure_getenv(kRecordedBusVariable);
    return recorded != nullptr && *recorded != '\0' ? recorded : "/sys";
}

std::optional<std::string> deviceBusLocation() {
    return busLocation();
}

} // namespace platform
