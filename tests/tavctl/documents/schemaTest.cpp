// Every JSON document is as its schema says, on every sample, and no member changes its meaning.
#include "tests/support/command.h"
#include "tests/tavctl/runTavctl.h"

#include <gtest/gtest.h>

namespace {

using namespace tavctltest;

TEST(Schemas, TellOfAllThatEveryCommandPrints) {
    // The system's own Python has the validator.
    const auto result = testsupport::runCommand("PATH=/usr/bin:$PATH python3 " TAV_SOURCE_DIR
                                                "/tests/tavctl/schema/validate.py " TAVCTL_FILE
                                                " " TAV_SOURCE_DIR " 2>&1");
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_NE(result.output.find(" buses, 0 faults\n"), std::string::npos) << result.output;
}

TEST(Schemas, CommandsThatPrintNoFactsTakeNoJson) {
    for (const char* command : {"draw", "record", "completion bash"})
        EXPECT_TRUE(says(runTavctl(std::string(command) + " --json " + kDump), 2,
                         R"("object":"--json","reason":"unknown option")"))
            << command;
}

} // namespace
