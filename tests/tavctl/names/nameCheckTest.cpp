// What can be wrong with stored names, and what becomes of them.
#include "tavctl/names/nameCheck.h"

#include "tavctl/match/deviceSurvey.h"
#include "tavctl/names/nameReport.h"
#include "tavctl/words/failure.h"
#include "tests/support/fileFolder.h"
#include "tests/support/fileText.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

namespace {

using namespace tavctl;
using testing::ElementsAre;
using testing::IsEmpty;
using Kind = NameProblem::Kind;

std::string entry(const std::string& slot, const std::string& model, const std::string& name) {
    return "[" + slot + "]\nModel = " + model + "\nTerminalName = " + name + "\n";
}

struct Names {
    testsupport::FileFolder folder;

    [[nodiscard]] NameFile file(const std::string& text) const {
        return NameFile(folder.write("names.ini", text), false);
    }
};

MatchedDevice device(const std::string& slot, const std::string& model, const std::string& name) {
    MatchedDevice result;
    result.slotPath = slot;
    result.record.modelName = model;
    result.record.terminalName = name;
    return result;
}

// "line kind"
std::vector<std::string> problemsOf(const NameFile& file, const Survey* survey = nullptr) {
    std::vector<std::string> result;
    for (const NameProblem& problem : checkNames(file, survey))
        result.push_back(std::to_string(problem.line) + " " + kindName(problem.kind));
    return result;
}

TEST(NameCheck, FindsNothingInWhatThePluginWrites) {
    const Names names;
    EXPECT_THAT(problemsOf(names.file(entry("MR00:00,20", "Box", "TAV1") +
                                      entry("MR40:08,E0", "Box", "TAV2"))),
                IsEmpty());
    EXPECT_THAT(problemsOf(names.file("")), IsEmpty());
}

// The plug-in stores them so, and tells them unescaped.
TEST(NameCheck, EscapedNamesAreThoseThatTheirDevicesTell) {
    const Names names;
    const NameFile file = names.file(entry("MR00:00,20", R"(The \"Box\"\x07)", R"(C:\\\x071)"));
    ASSERT_EQ(file.entries().size(), 1U);
    EXPECT_EQ(file.entries()[0].model, "The \"Box\"\x07");
    EXPECT_EQ(file.entries()[0].terminalName, "C:\\\x07"
                                              "1");
    const Survey now{device("MR00:00,20", "The \"Box\"\x07",
                            "C:\\\x07"
                            "1")};
    EXPECT_THAT(problemsOf(file, &now), IsEmpty());
    EXPECT_EQ(presenceOf(file.entries()[0], now), NamePresence::present);
    ASSERT_EQ(forecastNames(file, nullptr, now).size(), 1U);
    EXPECT_EQ(forecastNames(file, nullptr, now)[0].change, NameForecast::Change::stays);
    // What is written elsewhere is the file's own text.
    const auto copy = names.folder.file("copy.ini");
    file.write(copy);
    EXPECT_EQ(testsupport::fileText(copy),
              "[MR00:00,20]\r\nModel = The \\\"Box\\\"\\x07\r\nTerminalName = C:\\\\\\x071\r\n");
}

TEST(NameCheck, EntriesThatThePluginCannotUseAreMalformed) {
    const Names names;
    for (const char* slot :
         {"MR00:", "box", "mr00:00,20", "MR00:0,20", "0:00", "MR00:00,2", "MR00:e0", "MR0:00"})
        EXPECT_THAT(problemsOf(names.file(entry(slot, "Box", "TAV1"))), ElementsAre("1 malformed"))
            << slot;
    for (const char* name : {"TAV", "TAV0", "TAV01", "T2AV1", "TAV1x", "_"})
        EXPECT_THAT(problemsOf(names.file(entry("MR00:00", "Box", name))),
                    ElementsAre("1 malformed"))
            << name;
    EXPECT_THAT(problemsOf(names.file("[MR00:00]\nModel = Box\n")), ElementsAre("1 malformed"));
    EXPECT_THAT(problemsOf(names.file("[MR00:00]\nTerminalName = TAV1\n")),
                ElementsAre("1 malformed"));
}

TEST(NameCheck, NameOfTwoSlotsIsADuplicateOfTheFirst) {
    const Names names;
    const NameFile file =
        names.file(entry("MR00:00", "Box", "TAV1") + entry("MR00:08", "Box", "TAV2") +
                   entry("MR00:10", "Card", "TAV1"));
    const auto problems = checkNames(file, nullptr);
    ASSERT_EQ(problems.size(), 1U);
    EXPECT_EQ(problems[0].kind, Kind::duplicate);
    EXPECT_EQ(problems[0].line, 7);
    EXPECT_EQ(problems[0].slotPath, "MR00:10");
    EXPECT_EQ(problems[0].message, "this is the name of MR00:00 too");
}

TEST(NameCheck, SlotThatStandsTwiceIsADuplicate) {
    const Names names;
    EXPECT_THAT(
        problemsOf(names.file(entry("MR00:00", "Box", "TAV1") + entry("MR00:00", "Box", "TAV2"))),
        ElementsAre("4 duplicate"));
}

TEST(NameCheck, NamesWithoutTheirDeviceAreStale) {
    const Names names;
    const NameFile file =
        names.file(entry("MR00:00", "Box", "TAV1") + entry("MR00:08", "Box", "TAV2") +
                   entry("MR00:10", "Box", "TAV3") + entry("MR00:18", "Box", "TAV4"));
    const Survey survey{device("MR00:00", "Box", "TAV1"), device("MR00:08", "Card", "TAV5"),
                        device("MR00:18", "Box", "BOX1")};
    const auto problems = checkNames(file, &survey);
    ASSERT_EQ(problems.size(), 3U);
    EXPECT_EQ(problems[0].message, "the slot has a Card now, as TAV5");
    EXPECT_EQ(problems[1].message, "no device is in this slot");
    EXPECT_EQ(problems[2].message, "the slot has a Box now, as BOX1");
    EXPECT_THAT(problemsOf(file, &survey), ElementsAre("4 stale", "7 stale", "10 stale"));
    EXPECT_THAT(problemsOf(file), IsEmpty());
}

TEST(NamePresence, TwoModelsOfOneSlotAreBothLookedAt) {
    const Survey survey{device("MR00:00", "Card", "TAV5"), device("MR00:00", "Box", "TAV1")};
    EXPECT_EQ(presenceOf({"MR00:00", "Box", "TAV1", 1}, survey), NamePresence::present);
    EXPECT_EQ(presenceOf({"MR00:00", "Box", "TAV2", 1}, survey), NamePresence::replaced);
    EXPECT_EQ(presenceOf({"MR00:08", "Box", "TAV2", 1}, survey), NamePresence::absent);
}

TEST(NameForecast, TellsWhatStaysChangesIsNewAndGone) {
    const Names names;
    const NameFile file =
        names.file(entry("MR00:00", "Box", "TAV1") + entry("MR00:08", "Box", "TAV2") +
                   entry("MR00:10", "Box", "TAV3"));
    const Survey now{device("MR00:00", "Box", "TAV1"), device("MR00:08", "Box", "TAV2"),
                     device("MR00:10", "Box", "TAV3")};
    const Survey then{device("MR00:00", "Box", "TAV1"), device("MR00:08", "Box", "BOX1"),
                      device("MR00:20", "Card", "CARD1")};
    std::vector<std::string> changes;
    for (const NameForecast& forecast : forecastNames(file, &now, then))
        changes.push_back(forecast.terminalName + " " + changeName(forecast.change) + " " +
                          forecast.before + "@" + forecast.slotPath);
    EXPECT_THAT(changes, ElementsAre("TAV1 stays @MR00:00", "BOX1 changes TAV2@MR00:08",
                                     "CARD1 new @MR00:20", "TAV3 gone @MR00:10"));
    EXPECT_EQ(forecastNames(file, nullptr, then).size(), 3U);
}

TEST(NameFile, IsWrittenAsThePluginReadsItAndKeepsItsPermissions) {
    const Names names;
    const NameFile file = names.file("; a comment\n[MR00:00]\nModel = A long model name " +
                                     std::string(100, 'x') + "\nTerminalName = TAV1\n");
    const std::string target = names.folder.write("target.ini", "old");
    ASSERT_EQ(chmod(target.c_str(), 0640), 0);
    file.write(target);
    EXPECT_EQ(names.folder.read("target.ini"), "[MR00:00]\r\nModel = A long model name " +
                                                   std::string(100, 'x') +
                                                   "\r\nTerminalName = TAV1\r\n");
    EXPECT_EQ(names.folder.fileCount(), 2U);
    struct stat status = {};
    ASSERT_EQ(stat(target.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
    const std::string fresh = names.folder.file("fresh.ini");
    file.write(fresh);
    ASSERT_EQ(stat(fresh.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U) << "a new one is its owner's only";
}

TEST(NameFile, ThatIsMissingIsEmptyOnlyWhereThatIsMeant) {
    EXPECT_THAT(NameFile("/nonexistent/names.ini", true).entries(), IsEmpty());
    EXPECT_THROW(NameFile("/nonexistent/names.ini", false), FailureException);
}

TEST(NameFile, WrongEncodingIsTold) {
    const Names names;
    try {
        static_cast<void>(names.file(std::string("\xFF\xFE[\0", 4)));
        FAIL() << "nothing was raised";
    } catch (const FailureException& exception) {
        EXPECT_EQ(exception.failure().reason, "it is UTF-16 or UTF-32; UTF-8 is expected");
    }
}

TEST(NameFile, FailedWriteIsToldAndLeavesNothing) {
    const Names names;
    const NameFile file = names.file(entry("MR00:00", "Box", "TAV1"));
    try {
        file.write(names.folder.file("no-folder/names.ini"));
        FAIL() << "nothing was raised";
    } catch (const FailureException& exception) {
        EXPECT_EQ(exception.failure().operation, "write terminal names");
        EXPECT_EQ(exception.failure().reason, "No such file or directory");
    }
    EXPECT_EQ(names.folder.fileCount(), 1U);
}

TEST(NameReport, SlotThatHasAnotherDeviceNowIsReplaced) {
    const Names names;
    const NameFile file = names.file(entry("MR00:00", "Box", "TAV1"));
    const Survey survey{device("MR00:00", "Card", "TAV5")};
    EXPECT_EQ(namesAsTable(file, &survey, false), "NAME  PRESENT   MODEL  SLOT PATH\n"
                                                  "TAV1  replaced  Box    MR00:00\n");
    EXPECT_THAT(namesAsJson(file, &survey).line(), testing::HasSubstr(R"("presence":"replaced")"));
}

TEST(Survey, NamesThatCannotBeCopiedAreNamed) {
    const testsupport::FileFolder folder;
    std::filesystem::create_directory(folder.file("zotavpci.ini"));
    tavctl::CommonOptions options;
    options.state = folder.file("");
    try {
        surveyDevices(tavctl::HostSetup(options));
        FAIL() << "nothing was raised";
    } catch (const FailureException& exception) {
        EXPECT_EQ(exception.failure().operation, "read terminal names");
        EXPECT_EQ(exception.failure().object, folder.file("zotavpci.ini"));
        EXPECT_NE(exception.failure().reason, "");
    }
}

} // namespace
