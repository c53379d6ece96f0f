// What explain and describe take for a device.
#include "tests/tavctl/runTavctl.h"

#include <gmock/gmock.h>

namespace {

using namespace tavctltest;
using testing::HasSubstr;
using testing::Not;

const std::string kSampleOptions = kDump + kDescriptions;

TEST(ExplainSubject, TerminalNameIsItsModelAtItsAddress) {
    const auto result = runTavctl("explain TAV2 " + kSampleOptions);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_THAT(result.output,
                HasSubstr("tavctl: TAV2 is a terminal name: TAV-B3 Switch Box at 09:00.0\n"));
    EXPECT_THAT(result.output, HasSubstr("    09:00.0  listed\n"));
    EXPECT_THAT(result.output, Not(HasSubstr("01:00.0")));
    EXPECT_THAT(result.output, Not(HasSubstr("TAV-C1")));
}

TEST(ExplainSubject, AddressIsWhateverModelIsAboutIt) {
    EXPECT_TRUE(says(runTavctl("explain 0000:05:01.0 " + kSampleOptions), 0,
                     "TAV-C1 Adapter Card: listed once\n"));
    EXPECT_THAT(outputOf("explain 04:00.0 --json " + kSampleOptions),
                HasSubstr(R"("reported":"0000:04:00.0")"))
        << "also where the device is reported";
    EXPECT_TRUE(says(runTavctl("explain 00:1f.2 " + kSampleOptions), 1,
                     "no model has an anchor with the identifiers of this function, 8086:2922 "
                     "subsystem 1AF4:1100, or nearly so\n"));
    EXPECT_TRUE(says(runTavctl("explain 7f:00.0 " + kSampleOptions), 1,
                     "explain (7f:00.0): there is no function at this address\n"));
    EXPECT_TRUE(
        says(runTavctl("explain 0001:00:00.0 " + kSampleOptions), 1, "know domain 0 alone\n"));
}

TEST(ExplainSubject, AnythingElseIsNeitherModelNorName) {
    EXPECT_TRUE(says(runTavctl("explain TAV9 " + kSampleOptions), 1,
                     "explain (TAV9): no description file describes this model; did you mean "
                     "\"TAV1\"?\n"));
}

TEST(DescribeSubject, DeviceIsTheBridgeThatItIsToldBy) {
    const std::string described = outputOf("describe 09:00.0 " + kSampleOptions);
    EXPECT_THAT(described, HasSubstr("made from the bridge 09:00.0."));
    EXPECT_EQ(outputOf("describe TAV2 " + kSampleOptions), described);
    EXPECT_TRUE(says(runTavctl("describe \"TAV-B3 Switch Box\" " + kSampleOptions), 1,
                     "several devices are of this model; name one of them\n"));
    EXPECT_TRUE(says(runTavctl("describe TAV9 " + kSampleOptions), 1,
                     "find device (TAV9): no device has this name, address or model"));
}

} // namespace
