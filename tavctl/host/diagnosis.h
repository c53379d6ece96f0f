// Why did tavPlugin_initialize fail? The plug-in answers with a status alone; this takes its steps
// again, with the plug-in's own code, until one fails with that status, and tells which.
#pragma once

#include "tavctl/words/failure.h"

#include <cstdint>
#include <string>

namespace tavctl {

// The failing step, its object and reason, and the error record where there is one. When no step
// fails the same way a second time, the failure names the plug-in and the status.
Failure diagnoseInitialize(std::int32_t status, const std::string& pluginPath);

} // namespace tavctl
