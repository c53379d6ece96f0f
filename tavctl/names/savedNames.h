// The words of tavctl names that put all names elsewhere, or put them back.
#pragma once

#include "tavctl/names/namesOptions.h"

namespace tavctl {

// All raise FailureException.
ExitStatus backUpNames(const NamesOptions& options);
ExitStatus restoreNames(const NamesOptions& options);
ExitStatus undoLastChange(const NamesOptions& options);

} // namespace tavctl
