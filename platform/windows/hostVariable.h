// What a host program tells the libraries that it loads into its own process. Private to this
// folder.
#pragma once

#include "platform/systemCode.h"

#include <optional>
#include <string>

namespace platform {

// The configuration file that stands for the registry, and the recorded bus whose functions stand
// for the system's list of devices.
inline constexpr const wchar_t* kHostConfigurationFile = L"TAV_MANAGER_CONF";
inline constexpr const wchar_t* kHostPciFunctions = L"TAV_PCI_FUNCTIONS";

// A variable of the environment whose name also carries the process's number and the moment of its
// start. So only this process can have set it: what a parent, perhaps one of fewer privileges, left
// in the environment never counts.
std::optional<std::string> hostVariable(const wchar_t* name); // raises std::bad_alloc
SystemCode setHostVariable(const wchar_t* name, const std::string& utf8Value);
void clearHostVariable(const wchar_t* name);

} // namespace platform
