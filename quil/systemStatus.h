// The one place where an error code of the operating system becomes a status.
#pragma once

#include "platform/systemCode.h"
#include "quil/setError.h"

#include <cstdint>

namespace nZOQUIL000 {

// 0 stays 0; out of memory becomes zoquilerr_memoryFull; every other code becomes the negative
// number that carries it in its low 16 bits, below 0x8007, or below 0x800F where it is one of the
// system's device installation, as Windows itself maps the two kinds.
[[nodiscard]] std::int32_t statusFromSystemCode(platform::SystemCode code) noexcept;

// Sets the status of `code` with the record of `site`. True when it was taken.
bool setSystemError(tErrorStatus& status, platform::SystemCode code,
                    const tErrorSite& site) noexcept;

// Adds to the record of a status what the system says of `code`, as "internal_error" with "api",
// "code" and "string"; without "string" when there is no memory for the words. Nothing for success.
void appendSystemReason(tErrorStatus& status, platform::SystemCode code) noexcept;

} // namespace nZOQUIL000
