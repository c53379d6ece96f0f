// Runs tavctl as a person does, on the sample machine.
#pragma once

#include "tests/support/command.h"

#include <gtest/gtest.h>

#include <string>

namespace tavctltest {

inline const std::string kDump = "--dump " TAV_SOURCE_DIR "/samples/switchboxes.dump ";
inline const std::string kDescriptions = "--descriptions " TAV_SOURCE_DIR "/descriptions ";

// Standard output and standard error together.
inline testsupport::CommandResult runTavctl(const std::string& arguments) {
    return testsupport::runCommand(TAVCTL_FILE " " + arguments + " 2>&1");
}

// Standard output alone; standard error is the test's own.
inline testsupport::CommandResult runTavctlForOutput(const std::string& arguments) {
    return testsupport::runCommand(TAVCTL_FILE " " + arguments);
}

// Standard output alone; nothing of standard error.
inline std::string outputOf(const std::string& arguments) {
    return testsupport::runCommand(TAVCTL_FILE " " + arguments + " 2>/dev/null").output;
}

inline testing::AssertionResult says(const testsupport::CommandResult& result, int exitStatus,
                                     const std::string& text) {
    if (result.exitStatus == exitStatus && result.output.find(text) != std::string::npos)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "exit status " << result.exitStatus << ", output:\n"
                                       << result.output;
}

} // namespace tavctltest
