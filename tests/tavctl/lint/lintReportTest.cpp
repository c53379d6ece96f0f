// What lint says, to the letter, and how it ends.
#include "tavctl/lint/lint.h"
#include "tavctl/words/nearestName.h"
#include "tests/support/fileFolder.h"
#include "tests/tavctl/runTavctl.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

namespace {

using tavctltest::runTavctl;
using testsupport::FileFolder;

const std::string kSound = R"([UpstreamTAV]
Model = Box
DeviceCategory = PCI
InternalBridges = ""
ConnectorLabels = ""
DownstreamPorts = ""
HasUpstreamPort = 0
[Anchor]
PciHeaderType = 0
Vid = 1
Pid = 2
SsVid = 0
SsPid = 0
)";

std::string with(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
}

TEST(LintReport, ShowsPlaceLineCaretFoundAndExpected) {
    const FileFolder folder;
    const std::string file =
        folder.write("box.ini", with(kSound, "DeviceCategory = PCI", "DeviceCategory =\tpci"));
    EXPECT_EQ(tavctl::lint::reportAsText(tavctl::lint::lint({file})),
              file + ":3:18: error: unknown-category\n"
                     "    DeviceCategory = pci\n"
                     "                     ^~~\n"
                     "  found: DeviceCategory: \"pci\" is no device category\n"
                     "  expected: exactly PCI, Expresscard or SwitchboxTav\n"
                     "\n"
                     "1 file, 1 error, 0 warnings\n"
                     "The plug-in cannot load these files: it lists nothing at all.\n");
}

TEST(LintReport, AFaultThatEndsTheLoadHidesNoOther) {
    const FileFolder folder;
    std::string text = with(kSound, "DeviceCategory = PCI", "DeviceCategory = pci");
    text = with(text, "ConnectorLabels = \"\"", "ConnectorLabels = A");
    text = with(text, "PciHeaderType = 0", "PciHeaderType = 1");
    const auto report = tavctl::lint::lint({folder.write("box.ini", text)});
    ASSERT_EQ(report.findings.size(), 3U);
    EXPECT_EQ(report.findings[0].rule, "unknown-category");
    EXPECT_EQ(report.findings[1].rule, "too-many-labels");
    EXPECT_EQ(report.findings[2].rule, "anchor-not-described");
}

// One that is used for what it is named as has not been meant for another.
TEST(LintReport, SectionThatIsMissingMayBeOneThatNothingAsksFor) {
    const auto report =
        tavctl::lint::lint({TAV_SOURCE_DIR "/tests/tavctl/lint/rules/missing-section/bad/box.ini"});
    ASSERT_FALSE(report.findings.empty());
    EXPECT_EQ(report.findings.front().expected,
              "a line [DownstreamPort3], spelled exactly so; there is [DownstreamPort2]");
}

TEST(LintReport, CountsCharactersAndNotBytes) {
    const FileFolder folder;
    const std::string file = folder.write(
        "box.ini", with(kSound, "ConnectorLabels = \"\"", "ConnectorLabels = \"Ä,Ö, Ü\""));
    const auto report = tavctl::lint::lint({file});
    ASSERT_EQ(report.findings.size(), 2U);
    EXPECT_EQ(report.findings[1].rule, "blank-in-list");
    EXPECT_EQ(report.findings[1].place.column, 24);
    EXPECT_EQ(report.findings[1].place.length, 2);
}

TEST(LintReport, CaretStandsBelowTheCharacterAndNotTheByte) {
    const FileFolder folder;
    const std::string file = folder.write(
        "box.ini", with(kSound, "ConnectorLabels = \"\"", "ConnectorLabels = \"Ä,Ö, Ü\""));
    const std::string text = tavctl::lint::reportAsText(tavctl::lint::lint({file}));
    EXPECT_NE(text.find("    ConnectorLabels = \"Ä,Ö, Ü\"\n"
                        "                           ^~\n"),
              std::string::npos)
        << text;
}

TEST(LintReport, LabelsOfPortsThatNoLinkIsWideEnoughForAreTooMany) {
    const FileFolder folder;
    const std::string file =
        folder.write("box.ini", with(kSound, "ConnectorLabels = \"\"",
                                     "ConnectorLabels = A\nLinkWidthPerLabel = 64"));
    const auto report = tavctl::lint::lint({file});
    ASSERT_FALSE(report.findings.empty());
    EXPECT_EQ(report.findings[0].rule, "too-many-labels");
    EXPECT_EQ(report.findings[0].found,
              "1 label, but the ports take none: the model is never listed. No link is as wide as "
              "LinkWidthPerLabel");
}

TEST(LintReport, LongLinesAreShownAroundThePlace) {
    const FileFolder folder;
    const std::string file =
        folder.write("box.ini", with(kSound, "ConnectorLabels = \"\"",
                                     "ConnectorLabels = " + std::string(200, 'x') + ",, B" +
                                         std::string(100, 'y')));
    const std::string text = tavctl::lint::reportAsText(tavctl::lint::lint({file}));
    std::size_t start = text.find('\n') + 1;
    for (auto end = text.find('\n', start); end != std::string::npos;
         start = end + 1, end = text.find('\n', start)) {
        const std::string line = text.substr(start, end - start);
        if (!line.starts_with(file)) {
            EXPECT_LE(line.size(), 80U) << line;
        }
    }
    EXPECT_NE(text.find("xxx,, Byyy"), std::string::npos) << text;
}

// As long as the place is within what fits, the line is shown from its beginning.
TEST(LintReport, LinesAreMovedOnlyForPlacesThatWouldBeCutOff) {
    const auto shownFor = [](int column) {
        tavctl::lint::Finding finding;
        finding.rule = "odd-line";
        finding.file = "box.ini";
        finding.place = {1, column, 1};
        finding.text = std::string(73, 'a') + "b" + std::string(50, 'c');
        const std::string text = tavctl::lint::reportAsText({{"box.ini"}, {finding}});
        return text.substr(text.find("\n    ") + 5, 74);
    };
    EXPECT_EQ(shownFor(74), std::string(73, 'a') + "b");
    EXPECT_EQ(shownFor(75), std::string(23, 'a') + "b" + std::string(50, 'c'));
}

TEST(LintReport, JsonTellsTheSame) {
    const FileFolder folder;
    const std::string file = folder.write("box.ini", with(kSound, "Pid = 2", "Pid = x"));
    const auto report = nlohmann::json::parse(runTavctl("lint --json " + file).output);
    EXPECT_EQ(report.at("files").at(0), file);
    EXPECT_EQ(report.at("errors"), 1);
    EXPECT_EQ(report.at("loads"), false);
    const auto& finding = report.at("findings").at(0);
    EXPECT_EQ(finding.at("rule"), "bad-number");
    EXPECT_EQ(finding.at("severity"), "error");
    EXPECT_EQ(finding.at("line"), 11);
    EXPECT_EQ(finding.at("column"), 7);
    EXPECT_EQ(finding.at("text"), "Pid = x");
    EXPECT_EQ(finding.at("endsLoad"), true);
}

TEST(LintReport, FindingsAboutAWholeFileHaveNoLine) {
    const auto report = nlohmann::json::parse(runTavctl("lint --json /nonexistent.ini").output);
    EXPECT_TRUE(report.at("findings").at(0).at("line").is_null());
    EXPECT_EQ(report.at("findings").at(0).at("rule"), "cannot-open");
}

TEST(LintCommand, ErrorsExitWithOneAndWarningsWithZero) {
    const FileFolder folder;
    EXPECT_EQ(runTavctl("lint " + folder.write("sound.ini", kSound)).exitStatus, 0);
    const auto warned = runTavctl("lint " + folder.write("warned.ini", "stray\n" + kSound));
    EXPECT_EQ(warned.exitStatus, 0) << warned.output;
    EXPECT_NE(warned.output.find("odd-line"), std::string::npos);
    EXPECT_EQ(runTavctl("lint " + folder.write("bad.ini", "[UpstreamTAV]\n")).exitStatus, 1);
}

TEST(LintCommand, ChecksTheConfiguredFolderAsItIsLoaded) {
    const auto result = runTavctl("lint --descriptions " TAV_SOURCE_DIR "/descriptions");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "3 files, no problems\n");
}

TEST(LintCommand, NothingToCheckIsAProblem) {
    const FileFolder folder;
    const auto missing = runTavctl("lint --descriptions " + folder.file(""));
    EXPECT_EQ(missing.exitStatus, 3);
    EXPECT_NE(missing.output.find("there is no folder \"PCI Hardware Descriptions\" in it"),
              std::string::npos);
    std::filesystem::create_directory(folder.file("PCI Hardware Descriptions"));
    const auto empty = runTavctl("lint --descriptions " + folder.file(""));
    EXPECT_EQ(empty.exitStatus, 1);
    EXPECT_NE(empty.output.find("there are no description files in "), std::string::npos);
}

TEST(LintCommand, PrintsItsRules) {
    EXPECT_NE(runTavctl("lint --rules").output.find("unknown-category"), std::string::npos);
    const auto report = nlohmann::json::parse(runTavctl("lint --rules --json").output);
    EXPECT_GT(report.at("rules").size(), 30U);
}

} // namespace
