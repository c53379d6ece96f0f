// The system's words for an error. Private to this folder.
#pragma once

#include "platform/systemCode.h"
#include "platform/windows/systemHeaders.h"

#include <string>

namespace platform {

// As the narrow function has it, with its line break, but in UTF-8; empty when the system has no
// text for the code. Raises std::bad_alloc.
std::string rawSystemMessage(SystemCode code);

} // namespace platform
