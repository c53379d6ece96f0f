// Runs a program of the project's for a test, past any shell.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace testsupport {

struct ProgramResult {
    int exitStatus = -1; // -1 when it did not end by itself
    std::string output;  // standard output, to the byte
    std::string error;   // standard error
};

// Runs the program with these arguments until it ends; raises std::runtime_error when it cannot be
// started.
ProgramResult runProgram(const std::filesystem::path& program,
                         const std::vector<std::string>& arguments);

// A program that runs meanwhile.
class RunningProgram {
public:
    RunningProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments);
    ~RunningProgram(); // waits for its end
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    ProgramResult wait();

private:
    struct State;
    State* state_;
};

} // namespace testsupport
