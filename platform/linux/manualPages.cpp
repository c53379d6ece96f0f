#include "platform/manualPages.h"

namespace platform {

bool hasManualPages() noexcept {
    return true;
}

} // namespace platform
