#include "quil/zoerr.h"

#include "quil/memberWriter.h"
#include "quil/setError.h"
#include "quil/systemStatus.h"

namespace zoerr {

using nZOQUIL000::tErrorStatus;
using nZOQUIL000::tFixedStatus;

namespace {

// Plain: the host calls from one thread at a time, and a variable for each thread is dear.
int exceptionsOfHost = 0;

} // namespace

HostCall::HostCall() noexcept {
    exceptionsOfHost = std::uncaught_exceptions();
}

HostCall::~HostCall() {
    exceptionsOfHost = 0;
}

void raise(std::int32_t code, const nZOQUIL000::tErrorSite& site, const char* message) {
    const Exception exception;
    if (nZOQUIL000::setError(exception.status(), code, site) && message)
        nZOQUIL000::MemberWriter(exception.status()).append({"Message", message});
    throw Exception(exception);
}

void raiseIfFailed(tErrorStatus& status) {
    if (status.failed() && std::uncaught_exceptions() <= exceptionsOfHost)
        throw Exception(status);
}

void raiseIfFailed(const tFixedStatus& status, const char* path) {
    if (!status.failed())
        return;
    tErrorStatus converted;
    nZOQUIL000::convertFixedStatus(status, converted);
    if (path != nullptr) {
        nZOQUIL000::MemberWriter(converted).append({"path", path});
        const auto code = static_cast<platform::SystemCode>(status.systemCode);
        nZOQUIL000::appendSystemReason(converted, code);
    }
    raiseIfFailed(converted);
}

} // namespace zoerr
