// An environment variable for the length of a test.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace testsupport {

// For this process, the libraries that it loads and the programs that it starts.
std::optional<std::string> environmentValue(const std::string& name);
void setEnvironmentValue(const std::string& name, const std::optional<std::string>& value);

// Sets or removes the variable (nothing removes it), and restores it at the end.
class EnvironmentValue {
public:
    EnvironmentValue(std::string name, const std::optional<std::string>& value)
        : name_(std::move(name)), before_(environmentValue(name_)) {
        set(value);
    }
    ~EnvironmentValue() { set(before_); }
    EnvironmentValue(const EnvironmentValue&) = delete;
    EnvironmentValue& operator=(const EnvironmentValue&) = delete;

    void set(const std::optional<std::string>& value) { setEnvironmentValue(name_, value); }

private:
    std::string name_;
    std::optional<std::string> before_;
};

} // namespace testsupport
