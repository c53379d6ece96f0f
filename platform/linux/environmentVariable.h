// Variables of this process's environment, set for a while. Private to this folder.
#pragma once

#include "platform/systemCode.h"

#include <optional>
#include <string>

namespace platform {

// What this system is told by its environment: the configuration file, and the recorded bus.
inline constexpr const char* kConfigurationVariable = "TAV_MANAGER_CONF";
inline constexpr const char* kRecordedBusVariable = "TAV_PCI_DUMP";

// Sets a variable that other code of this process asks for with secure_getenv. 0; EPERM in a
// process with raised privileges, where that code would not be told; or why it could not be set.
SystemCode setTrustedVariable(const char* name, const std::string& value);

// Puts a variable back, when destroyed, to what it was when the object was made.
class VariableKeeper {
public:
    explicit VariableKeeper(const char* name); // the name must outlive the object
    ~VariableKeeper();
    VariableKeeper(const VariableKeeper&) = delete;
    VariableKeeper& operator=(const VariableKeeper&) = delete;

private:
    const char* name_;
    std::optional<std::string> value_;
};

} // namespace platform
