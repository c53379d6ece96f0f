// The examples as programs, on the sample machine and where something is wrong.
#include "tests/plugin/pluginCopy.h"
#include "tests/support/program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using testing::HasSubstr;
using testsupport::ProgramResult;

std::string withoutReturns(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

class ExampleHost : public testing::TestWithParam<const char*> {
protected:
    static ProgramResult run(const std::vector<std::string>& arguments = {}) {
        ProgramResult result = testsupport::runProgram(GetParam(), arguments);
        result.output = withoutReturns(result.output);
        return result;
    }
};

TEST(ExampleHostInC, ListsTheSampleMachine) {
    const testplugin::SampleMachine machine;
    const ProgramResult result = testsupport::runProgram(EXAMPLE_IN_C_FILE, {});
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_EQ(withoutReturns(result.output), "4 devices\n"
                                             "TAV1: TAV-B3 Switch Box\n"
                                             "  port 1: bus 03\n"
                                             "  port 2: bus 04\n"
                                             "  port 3: bus 08\n"
                                             "TAV2: TAV-B3 Switch Box\n"
                                             "  port 1: bus 0b\n"
                                             "  port 2: bus 0c\n"
                                             "  port 3: bus 0d\n"
                                             "TAVCard1: TAV-C1 Adapter Card\n"
                                             "  port LEFT: bus 06\n"
                                             "  port RIGHT: bus 07\n"
                                             "TAV3: TAV-W7 Wide Switch Box\n"
                                             "  port A1: bus 43, x4\n"
                                             "  port B1: bus 44, x8\n"
                                             "  port B2: bus 44, x8\n"
                                             "  port C1: bus 45, x16\n"
                                             "  port C2: bus 45, x16\n"
                                             "  port C3: bus 45, x16\n"
                                             "  port C4: bus 45, x16\n");
}

TEST(ExampleHostInCpp, ListsTheSampleMachine) {
    const testplugin::SampleMachine machine;
    const ProgramResult result = testsupport::runProgram(EXAMPLE_IN_CPP_FILE, {});
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    const std::string output = withoutReturns(result.output);
    EXPECT_THAT(output, HasSubstr("TAVCard1: TAV-C1 Adapter Card at 04:00.0, PCI\n"
                                  "  port LEFT: bus 06\n"
                                  "  port RIGHT: bus 07\n"
                                  "TAV3: TAV-W7 Wide Switch Box at 41:00.0, SwitchboxTav\n"
                                  "  port A1: bus 43, x4 5.0 GT/s\n"));
    EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 19);
}

TEST_P(ExampleHost, TellsThatThereIsNoPlugin) {
    const ProgramResult result = run({"absent.library"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.error, HasSubstr("absent.library"));
}

TEST_P(ExampleHost, TellsThatTheLibraryIsAnother) {
    const ProgramResult result = run({ZOPCIBRD_FILE});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.error, HasSubstr("function"));
}

TEST_P(ExampleHost, TellsTheStatusOfADevice) {
    const ProgramResult result = run({SCRIPTED_PLUGIN_FILE});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(result.error, HasSubstr("status -313007 ("));
}

INSTANTIATE_TEST_SUITE_P(Both, ExampleHost, testing::Values(EXAMPLE_IN_C_FILE, EXAMPLE_IN_CPP_FILE),
                         [](const auto& example) { return example.index == 0 ? "C" : "Cpp"; });

} // namespace
