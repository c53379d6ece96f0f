#include "platform/busLocation.h"

#include <cstdlib>

namespace platform {

std::optional<std::string> busLocation() {
    const char* const recorded = secure_getenv("TAV_PCI_DUMP");
    return recorded != nullptr && *recorded != '\0' ? recorded : "/sys";
}

std::optional<std::string> deviceBusLocation() {
    return busLocation();
}

} // namespace platform
