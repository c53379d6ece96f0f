// Catches what this process writes for its debugger.
#pragma once

#include <string>

namespace testsupport {

// One at a time. On Linux it catches all of standard error.
class DebugOutputCapture {
public:
    DebugOutputCapture();
    ~DebugOutputCapture();
    DebugOutputCapture(const DebugOutputCapture&) = delete;
    DebugOutputCapture& operator=(const DebugOutputCapture&) = delete;

    // Everything since the start, in the order written; ends the catching.
    std::string text();

private:
    bool ended_ = false;
};

// What reaches the debugger while the action runs.
template <typename Action>
std::string debugOutputOf(Action action) {
    DebugOutputCapture capture;
    action();
    return capture.text();
}

} // namespace testsupport
