// What is told of a folder that is named where one bus is to be read.
#include "tavctl/bus/busFailure.h"

#include "tests/support/temporaryFolder.h"
#include "tests/tavctl/runTavctl.h"
#include "tests/tavctl/sample.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;

const std::string kHint = "one recording in it can be named; list, names preview, lint --against "
                          "and report take a whole folder";

TEST(BusFailure, OfAFolderOfRecordingsNamesTheCommandsThatTakeIt) {
    const testsupport::TemporaryFolder lab;
    fs::copy_file(kSample, lab.path() / "rack1.dump");
    for (const char* command :
         {"draw", "explain", "tree", "where 01:00.0", "describe 01:00.0", "record", "monitor"})
        EXPECT_TRUE(says(runTavctl(command + std::string(" --dump ") + lab.path().string() +
                                   " --descriptions " + kSampleDescriptions),
                         3, kHint))
            << command;
}

TEST(BusFailure, OfAnythingElseHasNoHint) {
    const testsupport::TemporaryFolder folder;
    fs::create_directories(folder.path() / "bus" / "pci" / "devices");
    EXPECT_EQ(tavctl::hintForFolder(folder.path().string()), "");
    EXPECT_EQ(tavctl::hintForFolder((folder.path() / "missing").string()), "");
    EXPECT_EQ(tavctl::hintForFolder(kSample), "");
    const tavctl::Failure failure = tavctl::busFailure("gone.dump", "No such file or directory");
    EXPECT_EQ(failure.sentenceAndHint(), "read the bus (gone.dump): No such file or directory");
}

} // namespace
