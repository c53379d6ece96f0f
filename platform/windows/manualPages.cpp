#include "platform/manualPages.h"

namespace platform {

bool hasManualPages() noexcept {
    return false;
}

} // namespace platform
