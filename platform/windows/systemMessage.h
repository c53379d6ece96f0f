// The system's words for an error. Private to this folder.
#pragma once

#include "platform/systemCode.h"
#include "platform/windows/systemHeaders.h"

#include <string>

namespace platform {

// As the system has it, in the system's narrow character set and with its line break; empty when it
// has no text for the code. Raises std::bad_alloc.
std::string rawSystemMessage(SystemCode code);

} // namespace platform
