// A file that is written beside its place and put there when it is whole.
#pragma once

#include "platform/earlyEnd.h"
#include "platform/fileReplacement.h"

#include <optional>
#include <string>
#include <utility>

namespace tavctl {

// Removes the file when the program ends early.
using Removal = std::optional<platform::RemovedAtEarlyEnd>;

// An empty file beside the target, and its name. It is to be renamed or removed by whoever asked
// for it, before the removal goes. On failure there is no stream (see platform::createExclusively).
std::pair<platform::NewFile, std::string>
createBeside(const std::string& target, platform::NewFileAccess access, Removal& removal);

} // namespace tavctl
