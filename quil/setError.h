// Puts an error into a status together with the record of where it arose. Nothing here raises; when
// memory runs out the code is set all the same and the record ends after its last whole member.
#pragma once

#include "quil/memberWriter.h"
#include "quil/tErrorSite.h"
#include "quil/tErrorStatus.h"

#include <cstdint>

namespace nZOQUIL000 {

// The code of setSiteOnlyError(): a function that should be bound is not.
inline constexpr std::int32_t kSiteOnlyError = -313008;

// Sets the code by the merge rule. When it is taken, the text becomes the record of the site:
// "error_constant", "file", "line", "component". True when the code was taken; otherwise the status
// is as before.
bool setError(tErrorStatus& status, std::int32_t code, const tErrorSite& site) noexcept;

// Sets kSiteOnlyError with "file", "line" and "component" only. False, and nothing changes, when
// the status already holds an error.
bool setSiteOnlyError(tErrorStatus& status, const tErrorSite& site) noexcept;

} // namespace nZOQUIL000
