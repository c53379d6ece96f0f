// What would become of the names of many recorded machines.
#pragma once

#include "tavctl/names/namesOptions.h"

namespace tavctl {

// For the folder of recordings (see recordings/recording.h) that --dump names: the names stored
// beside each, under the new descriptions. Raises FailureException.
ExitStatus previewCollection(const NamesOptions& options);

} // namespace tavctl
