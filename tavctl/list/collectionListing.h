// What list tells of many recorded machines.
#pragma once

#include "tavctl/list/listFilter.h"
#include "tavctl/options/commonOptions.h"
#include "tavctl/words/exitStatus.h"

#include <string>
#include <vector>

namespace tavctl {

// Lists what the recordings at the paths (see recordings/recording.h) have, one machine after the
// other, each as soon as it is known: for people a table under the name of each, for programs one
// document. A recording that cannot be read is told of, and the others are listed all the same.
// Raises FailureException.
ExitStatus listCollection(const std::vector<std::string>& paths, const CommonOptions& options,
                          const ListFilter& filter, bool verbose);

} // namespace tavctl
