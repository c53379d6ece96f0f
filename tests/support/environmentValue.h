// An environment variable for the length of a test.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace testsupport {

// Sets or removes the variable (nothing removes it), and restores it at the end.
class EnvironmentValue {
public:
    EnvironmentValue(std::string name, const std::optional<std::string>& value)
        : name_(std::move(name)) {
        if (const char* const before = std::getenv(name_.c_str()))
            before_ = before;
        set(value);
    }
    ~EnvironmentValue() { set(before_); }
    EnvironmentValue(const EnvironmentValue&) = delete;
    EnvironmentValue& operator=(const EnvironmentValue&) = delete;

    void set(const std::optional<std::string>& value) {
        if (value)
            setenv(name_.c_str(), value->c_str(), 1);
        else
            unsetenv(name_.c_str());
    }

private:
    std::string name_;
    std::optional<std::string> before_;
};

} // namespace testsupport
