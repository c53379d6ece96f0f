// Which recordings a command line names.
#include "tavctl/recordings/recording.h"

#include "platform/utf8Path.h"
#include "tests/support/temporaryFolder.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using tavctl::Recording;
using tavctl::recordingsAt;
using testing::ElementsAre;

class RecordingsTest : public testing::Test {
protected:
    std::string write(const std::string& name) {
        fs::create_directories((folder_.path() / name).parent_path());
        return platform::utf8Text(folder_.file(name, "00:00.0 Host bridge: x\n"));
    }
    std::string path(const std::string& name = {}) const {
        return platform::utf8Text(folder_.path() / name);
    }

    testsupport::TemporaryFolder folder_;
};

TEST_F(RecordingsTest, AFolderHasThoseOfItsFoldersByName) {
    write("b.dump");
    write("a/z.txt");
    write("a/inner/deep");
    write("c.lspci");
    std::vector<std::string> machines;
    for (const Recording& each : recordingsAt({path()}))
        machines.push_back(each.machine);
    EXPECT_THAT(machines, ElementsAre("deep", "z", "b", "c"));
}

TEST_F(RecordingsTest, HiddenFilesAndNameFilesAreNone) {
    write("a.dump");
    write("a.ini");
    write(".hidden.dump");
    write(".git/b.dump");
    EXPECT_EQ(recordingsAt({path()}).size(), 1U);
}

TEST_F(RecordingsTest, WhatIsNamedByItselfIsOneWhateverItIsCalled) {
    const std::string hidden = write(".hidden.ini");
    const auto found = recordingsAt({hidden});
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front().name, hidden);
    EXPECT_EQ(found.front().dump.path(), hidden);
}

TEST_F(RecordingsTest, KeepTheOrderOfThePaths) {
    const std::string last = write("z.dump");
    const std::string first = write("a.dump");
    const auto found = recordingsAt({last, first, last});
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[0].machine, "z");
    EXPECT_EQ(found[1].machine, "a");
    EXPECT_EQ(found[2].machine, "z");
}

TEST_F(RecordingsTest, AMachineIsCalledAsTheFileWithoutItsKind) {
    EXPECT_EQ(recordingsAt({write("rack7.lab.example.dump")}).front().machine, "rack7.lab.example");
    EXPECT_EQ(recordingsAt({write("rack7.lab.example")}).front().machine, "rack7.lab.example");
    EXPECT_EQ(recordingsAt({write(".dump")}).front().machine, ".dump");
}

TEST_F(RecordingsTest, NamesStandBesideARecording) {
    const std::string dump = write("rack7.dump");
    const std::string names = write("rack7.ini");
    const std::string bare = write("rack8");
    const std::string bareNames = write("rack8.ini");
    EXPECT_EQ(recordingsAt({dump}).front().nameFile, names);
    EXPECT_EQ(recordingsAt({bare}).front().nameFile, bareNames);
    EXPECT_EQ(recordingsAt({write("rack9.dump")}).front().nameFile, "");
}

TEST_F(RecordingsTest, AFolderThatStandsForSysIsOne) {
    fs::create_directories(folder_.path() / "lab" / "rack7.v2" / "bus" / "pci" / "devices");
    write("lab/rack7.v2/bus/pci/devices/file");
    const std::string names = write("lab/rack7.v2.ini");
    EXPECT_FALSE(tavctl::isCollection(path("lab/rack7.v2")));
    EXPECT_FALSE(tavctl::isCollection(path("lab/rack7.v2/")));
    EXPECT_TRUE(tavctl::isCollection(path("lab")));
    for (const std::string& named : {path("lab"), path("lab/rack7.v2"), path("lab/rack7.v2/")}) {
        const auto found = recordingsAt({named});
        ASSERT_EQ(found.size(), 1U) << named;
        EXPECT_EQ(found.front().machine, "rack7.v2") << named;
        EXPECT_EQ(platform::utf8Path(found.front().nameFile).lexically_normal(),
                  platform::utf8Path(names).lexically_normal())
            << named;
    }
}

TEST_F(RecordingsTest, AFolderWithoutAnyIsRefused) {
    fs::create_directories(folder_.path() / "empty" / "inner");
    try {
        (void)recordingsAt({path("empty")});
        FAIL() << "nothing was raised";
    } catch (const tavctl::FailureException& exception) {
        EXPECT_EQ(exception.failure().sentence(), "search for recordings (" + path("empty") +
                                                      "): no recorded bus is in this folder");
    }
}

TEST_F(RecordingsTest, AFileThatIsNotThereIsARecordingThatCannotBeRead) {
    EXPECT_EQ(recordingsAt({path("missing.dump")}).size(), 1U);
}

} // namespace
