#include "platform/linux/environmentVariable.h"

#include <cerrno>
#include <cstdlib>

namespace platform {

SystemCode setTrustedVariable(const char* name, const std::string& value) {
    if (setenv(name, value.c_str(), 1) != 0)
        return lastSystemCode();
    return secure_getenv(name) != nullptr ? kNoSystemError : SystemCode{EPERM};
}

VariableKeeper::VariableKeeper(const char* name) : name_(name) {
    if (const char* const value = std::getenv(name))
        value_ = value;
}

VariableKeeper::~VariableKeeper() {
    if (value_)
        setenv(name_, value_->c_str(), 1);
    else
        unsetenv(name_);
}

} // namespace platform
