// The words of tavctl names that change single names on purpose.
#pragma once

#include "tavctl/names/namesOptions.h"

namespace tavctl {

// Both raise FailureException, with ExitStatus::problemFound for what is refused.

// The name `name` becomes `newName`; with `swap` the two change places.
ExitStatus renameName(const NamesOptions& options);

// The slot of `name` has no entry any more.
ExitStatus forgetName(const NamesOptions& options);

} // namespace tavctl
