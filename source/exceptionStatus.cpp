#include "source/exceptionStatus.h"

#include "source/tavStatus.h"

#include <stdexcept>

namespace nZoTavManagerPciPlugin_15_0 {

std::int32_t statusOfCurrentException() noexcept {
    try {
        throw;
    } catch (const zoerr::Exception& exception) {
        return exception.status().code;
    } catch (const std::out_of_range&) {
        return kTavManErrInvalidParam;
    } catch (...) {
        return kTavManErrSoftwareFault;
    }
}

} // namespace nZoTavManagerPciPlugin_15_0
