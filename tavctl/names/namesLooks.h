// The words of tavctl names that change nothing.
#pragma once

#include "tavctl/names/namesOptions.h"

namespace tavctl {

// All raise FailureException.
ExitStatus listNames(const NamesOptions& options);
ExitStatus checkStoredNames(const NamesOptions& options);
ExitStatus previewNames(const NamesOptions& options);

} // namespace tavctl
