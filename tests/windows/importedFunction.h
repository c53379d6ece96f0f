// Puts a function of a test's own in the place of a system function that the test program imports:
// the test sees with which arguments the product calls it, and decides what it answers.
#pragma once

#include <string>
#include <vector>

namespace testwindows {

// The replacement must have the function's own type, calling convention included. One object for a
// function at a time; calls that the system's libraries make of each other are not seen.
class ImportedFunction {
public:
    // Raises std::runtime_error when this program does not import the function.
    ImportedFunction(const std::string& name, void* replacement);
    ~ImportedFunction();
    ImportedFunction(const ImportedFunction&) = delete;
    ImportedFunction& operator=(const ImportedFunction&) = delete;

    // The system's function.
    [[nodiscard]] void* real() const { return real_; }

private:
    std::vector<void**> places_; // where the program keeps the address
    void* real_ = nullptr;
};

} // namespace testwindows
