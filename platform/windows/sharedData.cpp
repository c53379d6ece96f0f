#include "platform/sharedData.h"

namespace platform {

// Programs bring their data along.
std::vector<std::string> sharedDataFolders() {
    return {};
}

} // namespace platform
