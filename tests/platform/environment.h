// Variables of the test program's environment, back to what they were when the test ends.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace platformtest {

inline std::optional<std::string> variable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

class Variable {
public:
    explicit Variable(const char* name) : name_(name), before_(variable(name)) {}
    Variable(const char* name, const std::string& value) : Variable(name) { set(value); }
    ~Variable() {
        if (before_)
            set(*before_);
        else
            clear();
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

    void set(const std::string& value) { setenv(name_, value.c_str(), 1); }
    void clear() { unsetenv(name_); }

private:
    const char* name_;
    std::optional<std::string> before_;
};

} // namespace platformtest
