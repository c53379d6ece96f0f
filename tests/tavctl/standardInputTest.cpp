// A recorded bus on standard input, "--dump -".
#include "tests/support/environmentValue.h"
#include "tests/support/fileFolder.h"
#include "tests/tavctl/runTavctl.h"
#include "tests/tavctl/sample.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;
using testing::HasSubstr;
using testing::Not;
using testsupport::CommandResult;
using testsupport::FileFolder;

class StandardInput : public testing::Test {
protected:
    StandardInput() {
        fs::create_directory(folder_.file("state"));
        fs::create_directory(folder_.file("temporary"));
        temporary_.set(folder_.file("temporary"));
    }
    // Whatever was kept is gone.
    ~StandardInput() override { EXPECT_TRUE(fs::is_empty(folder_.file("temporary"))); }

    [[nodiscard]] CommandResult run(const std::string& words, const std::string& input) const {
        return runTavctl(words + " " + kDescriptions + "--state " + folder_.file("state") + " <" +
                         input);
    }

    FileFolder folder_;
    testsupport::EnvironmentValue temporary_{"TMPDIR", std::nullopt};
};

TEST_F(StandardInput, IsABusToEveryCommand) {
    ASSERT_EQ(run("list --dump " + kSample, "/dev/null").exitStatus, 0);
    for (const std::string words :
         {"list", "tree", "tree --json", "explain", "names", "names check", "names preview",
          "record", "record --scrub", "describe 01:00.0"}) {
        const CommandResult file = run(words + " --dump " + kSample, "/dev/null");
        const CommandResult input = run(words + " --dump -", kSample);
        EXPECT_EQ(input.output, file.output) << words;
        EXPECT_EQ(input.exitStatus, file.exitStatus) << words;
    }
}

TEST_F(StandardInput, MayBeAPipe) {
    const std::string words =
        "list --dump - " + kDescriptions + "--state " + folder_.file("state") + " 2>&1";
    EXPECT_TRUE(
        says(testsupport::runCommand("cat " + kSample + " | " TAVCTL_FILE " " + words), 0, "TAV3"));
}

TEST_F(StandardInput, GivesOneBusHoweverOftenItIsNamed) {
    EXPECT_TRUE(says(run("names preview --dump - --new-dump -", kSample), 0, "TAV3      new "));
    EXPECT_TRUE(says(run("names preview --new-dump -", kSample), 0, "TAV3      new "));
    const auto compared = run("lint --against - " + kSample + " -", kSample);
    EXPECT_TRUE(says(compared, 0, "\nstandard input\n  has    01:00.0  TAV-B3 Switch Box\n"));
    EXPECT_THAT(compared.output, Not(HasSubstr("has none")));
    EXPECT_THAT(run("lint --json --against -", kSample).output,
                HasSubstr(R"("dump":"standard input")"));
}

TEST_F(StandardInput, IsWhatADrawingIsCalled) {
    const auto drawn = run("draw --format dot --dump -", kSample);
    EXPECT_TRUE(says(drawn, 0, "<B>standard input</B>"));
    EXPECT_THAT(drawn.output, Not(HasSubstr("temporary")));
}

TEST_F(StandardInput, WithoutAnythingIsAnEmptyBus) {
    EXPECT_TRUE(
        says(run("list --dump -", "/dev/null"), 0, "no described device is present on this bus"));
}

TEST_F(StandardInput, IsNamedWhereItIsNoBus) {
    const std::string wrong = folder_.write("wrong", "\n1\n");
    for (const std::string words : {"list", "list --debug", "list --json", "tree", "explain",
                                    "record", "record --scrub", "names preview"}) {
        const auto result = run(words + " --dump -", wrong);
        EXPECT_TRUE(says(result, 3, "standard input")) << words;
        EXPECT_THAT(result.output, Not(HasSubstr("tavctl-"))) << words;
    }
    EXPECT_TRUE(says(run("record --dump -", wrong), 3,
                     "tavctl: read the bus (standard input): standard input:2: expected what "));
    EXPECT_TRUE(says(run("lint --against -", wrong), 3, "(standard input): standard input:2: "));
}

TEST_F(StandardInput, ThatCannotBeReadIsNamedWithTheReason) {
    EXPECT_TRUE(says(run("list --dump -", folder_.file("state")), 3,
                     "tavctl: read the bus (standard input): Is a directory\n"));
    EXPECT_TRUE(says(run("list --dump -", "&-"), 3,
                     "tavctl: read the bus (standard input): Bad file descriptor\n"));
}

TEST_F(StandardInput, CannotBeTheAnswersToo) {
    EXPECT_TRUE(says(run("describe 01:00.0 --watch --dump -", kSample), 2,
                     "tavctl: describe (--watch): the answers come from standard input, "));
}

TEST_F(StandardInput, ThatIsATerminalIsAskedForAloud) {
    const auto result =
        testsupport::runCommand("printf '\\004' | script -qec '" TAVCTL_FILE " list --dump - " +
                                kDescriptions + "--state " + folder_.file("state") + "' /dev/null");
    EXPECT_THAT(result.output, HasSubstr("tavctl: reading a recorded bus from standard input"));
    EXPECT_THAT(result.output, HasSubstr("no described device is present on this bus"));
}

} // namespace
