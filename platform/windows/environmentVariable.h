// Variables of this process's environment, past the C library, which keeps a copy of its own in
// each module. Private to this folder.
#pragma once

#include "platform/systemCode.h"

#include <optional>
#include <string>

namespace platform {

inline constexpr const wchar_t* kRecordedBusVariable = L"TAV_PCI_DUMP"; // see busLocation.h

// The text in UTF-8; nothing when the variable is missing or empty. Raises std::bad_alloc.
std::optional<std::string> environmentVariable(const wchar_t* name);

SystemCode setEnvironmentVariable(const wchar_t* name, const std::string& utf8Value);

} // namespace platform
