// tavctl monitor as it runs beside a test.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace testtavctl {

class RunningMonitor {
public:
    // `options` are words for the shell. Standard error goes to the same pipe as standard output.
    explicit RunningMonitor(const std::string& options);
    ~RunningMonitor();
    RunningMonitor(const RunningMonitor&) = delete;
    RunningMonitor& operator=(const RunningMonitor&) = delete;

    // Waits until it has printed a line with this text, of those that were not asked for yet, and
    // answers the line; a text that says so when none came.
    std::string line(const std::string& text);

    // Everything that it has printed so far, as far as it was waited for.
    [[nodiscard]] const std::string& output() const { return output_; }

    void signal(int number) const;
    // No longer reads what it prints.
    void closeOutput();

    // Waits for its end: the exit status, or 128 and the signal that ended it; -1 when it does not
    // end. What it prints until then is in output().
    int end();

private:
    bool read();

    pid_t process_ = -1;
    int pipe_ = -1;
    std::string output_;
    std::size_t asked_ = 0; // up to here the lines were asked for
};

} // namespace testtavctl
