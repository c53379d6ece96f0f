// Runs the examples of one document as its reader would: in a folder with the project's samples and
// descriptions, on a machine that has the sample bus and nothing named yet.
#pragma once

#include "tests/examples/exampleFile.h"
#include "tests/support/temporaryFolder.h"

#include <string>
#include <vector>

namespace testexamples {

class ExampleRun {
public:
    ExampleRun();

    // What is not as the document says, a text each; empty when all is. A command must end with 0,
    // with 1 where the document shows that it found something, or with the status that a following
    // "$ echo $?" shows.
    std::vector<std::string> run(const Example& example);

private:
    std::vector<std::string> runCommands(const std::vector<Command>& commands);
    void apply(const Edit& edit);

    testsupport::TemporaryFolder folder_;
    std::filesystem::path home_; // where the reader is
};

// Whether the lines are the expected ones, of which "..." stands for any number.
bool matchesLines(const std::vector<std::string>& lines, const std::vector<std::string>& expected);

} // namespace testexamples
