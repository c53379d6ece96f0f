// tavctl report as it is run.
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

class ReportCommand : public testing::Test {
protected:
    [[nodiscard]] std::string page() const { return folder_.file("lab.html"); }
    [[nodiscard]] testsupport::CommandResult report(const std::string& rest) const {
        return runTavctl("report " + kDescriptions + rest);
    }

    testsupport::FileFolder folder_;
};

TEST_F(ReportCommand, WritesOnePageOfAllRecordings) {
    EXPECT_TRUE(says(report(kSample + " " + kProject.string() + "/samples/one-switch.dump -o " +
                            page() + " --title 'Lab 7'"),
                     0, ""));
    const std::string text = folder_.read("lab.html");
    EXPECT_TRUE(text.starts_with("<!DOCTYPE html>\n"));
    EXPECT_THAT(text, HasSubstr("<title>Lab 7</title>"));
    EXPECT_THAT(text, HasSubstr(R"("n":"switchboxes")"));
    EXPECT_THAT(text, HasSubstr(R"("n":"one-switch")"));
    EXPECT_THAT(text, HasSubstr("TAV-W7 Wide Switch Box"));
}

TEST_F(ReportCommand, TheSameRecordingsMakeTheSamePage) {
    const std::string all = (kProject / "samples").string();
    const std::string first = outputOf("report " + kDescriptions + all);
    EXPECT_THAT(first, HasSubstr("</html>"));
    EXPECT_EQ(outputOf("report " + kDescriptions + all), first);
}

TEST_F(ReportCommand, WithoutARecordingItIsTheBusAtHandWithItsNames) {
    const std::string state = folder_.file("state");
    fs::create_directory(state);
    ASSERT_EQ(runTavctl("list " + kDump + kDescriptions + "--state " + state).exitStatus, 0);
    ASSERT_EQ(runTavctl("names rename TAV2 TAV9 --state " + state + " " + kDump + kDescriptions)
                  .exitStatus,
              0);
    const std::string text = outputOf("report " + kDump + kDescriptions + "--state " + state);
    EXPECT_THAT(text, HasSubstr(R"("n":"TAV9","s":1)"));
    EXPECT_THAT(text, HasSubstr(R"("n":"switchboxes")"));
    const std::string one = kProject.string() + "/samples/one-switch.dump ";
    EXPECT_THAT(outputOf("report --dump " + one + kDescriptions + "--state " + state),
                HasSubstr(R"(["TAV9","TAV-B3 Switch Box","MR00:00,28",)"));
}

TEST_F(ReportCommand, WhatCannotBeReadStandsInThePageAndInTheExitStatus) {
    const auto result = report(kSample + " /nonexistent -o " + page());
    EXPECT_TRUE(says(result, 3, "tavctl: read the bus (/nonexistent): "));
    EXPECT_THAT(folder_.read("lab.html"), HasSubstr(R"("f":"read the bus (/nonexistent): )"));
    EXPECT_THAT(folder_.read("lab.html"), HasSubstr(R"("n":"TAV1")"));
}

TEST_F(ReportCommand, ReplacesNothingUnasked) {
    folder_.write("lab.html", "mine\n");
    EXPECT_TRUE(says(report(kSample + " -o " + page()), 3, page()));
    EXPECT_EQ(folder_.read("lab.html"), "mine\n");
    EXPECT_TRUE(says(report(kSample + " --force -o " + page()), 0, ""));
    EXPECT_THAT(folder_.read("lab.html"), HasSubstr("</html>"));
}

TEST_F(ReportCommand, AFolderOfRecordingsMayBeTheDump) {
    const std::string samples = (kProject / "samples").string();
    const std::string text = outputOf("report " + kDescriptions + "--dump " + samples);
    EXPECT_EQ(text, outputOf("report " + kDescriptions + samples));
    EXPECT_TRUE(says(report("--state " + folder_.file("") + " " + samples), 2,
                     "tavctl: report (--state): many machines have no names in common"));
}

TEST_F(ReportCommand, AFaultyDescriptionMakesNoPage) {
    fs::create_directories(folder_.file("faulty/PCI Hardware Descriptions"));
    folder_.write("faulty/PCI Hardware Descriptions/a.ini", "[PciModel]\n");
    EXPECT_TRUE(says(runTavctl("report --descriptions " + folder_.file("faulty") + " " + kSample +
                               " -o " + page()),
                     3, "a.ini"));
    EXPECT_FALSE(folder_.has("lab.html"));
}

} // namespace
