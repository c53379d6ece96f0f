// Looking changes nothing: not the names, not the folders, and not what is beside them.
#include "tests/support/configuredMachine.h"
#include "tests/support/environmentValue.h"
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"
#include "tests/tavctl/everyCommand.h"
#include "tests/tavctl/runTavctl.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <map>
#include <string>
#include <utility>

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;
using testsupport::TemporaryFolder;

// Whatever can be told of a folder: files, their bytes, and when they were written.
std::map<std::string, std::string> contentsOf(const fs::path& folder) {
    std::map<std::string, std::string> contents;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        std::string state;
        if (entry.is_regular_file())
            state = std::to_string(entry.last_write_time().time_since_epoch().count()) + "\n" +
                    testsupport::fileText(entry.path());
        contents.emplace(entry.path().string(), state);
    }
    return contents;
}

// A machine that is configured, with a bus that is recorded, and a folder for temporary files.
class Looking : public testing::Test {
protected:
    Looking() {
        fs::create_directories(state_);
        fs::create_directories(temporary_);
    }

    void storeNames() const {
        ASSERT_TRUE(says(runTavctl("list " + kDump + kDescriptions + "--state " + state_.string()),
                         0, "TAV1 "));
    }

    TemporaryFolder folder_;
    const fs::path state_ = folder_.path() / "state";
    const fs::path temporary_ = folder_.path() / "temporary";
    const testsupport::ConfiguredMachine machine_{
        kSample, {kSampleDescriptions + "/", (state_ / "").string()}};
    const testsupport::EnvironmentValue temporaryFolder_{"TMPDIR", temporary_.string()};
};

TEST_F(Looking, ChangesNothingWhereNoNamesAreStored) {
    const auto before = contentsOf(folder_.path());
    for (const std::string& form : looksAtMachine()) {
        for (const std::string& bus : {std::string(), kDump}) {
            EXPECT_EQ(runTavctl(form + " " + bus).exitStatus, 0) << form;
            EXPECT_EQ(contentsOf(folder_.path()), before) << form;
        }
    }
}

TEST_F(Looking, ChangesNothingWhereOtherNamesAreStored) {
    const std::string names = "[MR00:00,28]\r\nModel = TAV-B3 Switch Box\r\n"
                              "TerminalName = TAV7\r\n\r\n";
    EXPECT_TRUE(fs::exists(folder_.file("state/zotavpci.ini", names)));
    const auto before = contentsOf(folder_.path());
    for (const std::string& form : looksAtMachine()) {
        runTavctl(form + " " + kDump);
        EXPECT_EQ(contentsOf(folder_.path()), before) << form;
    }
    EXPECT_TRUE(says(runTavctl("list"), 0, "\nTAV7   "));
    EXPECT_TRUE(says(runTavctl("list"), 0, "\nTAV1*  "));
    EXPECT_TRUE(says(runTavctl("tree"), 0, "{TAV1*: TAV-B3 Switch Box}"));
    EXPECT_TRUE(says(runTavctl("draw --format dot"), 0, "TAV1*"));
    EXPECT_TRUE(
        says(runTavctl("tree"), 0, "tavctl: names with * would be given, and are not stored\n"));
}

TEST_F(Looking, OnlyListWithAStateFolderStores) {
    const std::string option = " --state " + state_.string();
    for (const std::string& form : looksAtMachine()) {
        if (form.starts_with("list"))
            continue;
        const auto before = contentsOf(folder_.path());
        runTavctl(form + option);
        EXPECT_EQ(contentsOf(folder_.path()), before) << form;
    }
    EXPECT_TRUE(says(runTavctl("list" + option), 0, "\nTAV1      "));
    EXPECT_TRUE(fs::exists(state_ / "zotavpci.ini"));
    EXPECT_EQ(runTavctl("list").output, runTavctl("list" + option).output);
}

TEST_F(Looking, ARefusedChangeChangesNothing) {
    storeNames();
    const auto before = contentsOf(folder_.path());
    for (const std::string& form : refusedChanges()) {
        EXPECT_NE(runTavctl(form + " " + kDump).exitStatus, 0) << form;
        EXPECT_EQ(contentsOf(folder_.path()), before) << form;
    }
}

TEST_F(Looking, AChangeOfNamesWritesThemAndThoseOfBefore) {
    for (const std::string& form : changesNames()) {
        fs::remove_all(state_);
        fs::create_directories(state_);
        storeNames();
        auto expected = contentsOf(folder_.path());
        const std::string file = (state_ / "zotavpci.ini").string();
        const std::string names = testsupport::fileText(file);
        EXPECT_EQ(runTavctl(form + " " + kDump).exitStatus, 0) << form;
        EXPECT_NE(testsupport::fileText(file), names) << form;
        EXPECT_EQ(testsupport::fileText(file + ".before"), names) << form;
        auto now = contentsOf(folder_.path());
        for (const std::string& written : {file, file + ".before"}) {
            now.erase(written);
            expected.erase(written);
        }
        EXPECT_EQ(now, expected) << form;
    }
}

TEST_F(Looking, ARecordedBusNeedsNoStateFolder) {
    const testsupport::EnvironmentValue none("TAV_MANAGER_CONF", "/nonexistent.conf");
    for (const char* command : {"list ", "tree ", "draw --format dot ", "explain "})
        EXPECT_EQ(runTavctl(command + kDump + kDescriptions).exitStatus, 0) << command;
    EXPECT_TRUE(says(runTavctl("list " + kDump + kDescriptions), 0, "\nTAV1*  "));
}

TEST_F(Looking, LeavesTheMachinesOwnBusAloneToo) {
    const testsupport::EnvironmentValue live("TAV_PCI_DUMP", std::nullopt);
    storeNames();
    const auto before = contentsOf(state_);
    for (const char* command : {"tree", "draw --format dot", "explain", "names check"}) {
        runTavctl(command);
        EXPECT_EQ(contentsOf(state_), before) << command;
    }
}

// What somebody runs who may look at the folder of root's names, and not write there. Whoever is
// not root takes the right from himself.
std::string asOrdinaryUser(const std::string& arguments) {
    return geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " TAVCTL_FILE " " +
                                arguments + " 2>&1"
                          : TAVCTL_FILE " " + arguments + " 2>&1";
}

TEST_F(Looking, IsDoneByAUserWhoMayNotWrite) {
    storeNames();
    fs::permissions(folder_.path(), fs::perms(0755));
    fs::permissions(temporary_, fs::perms(0777));
    fs::permissions(state_ / "zotavpci.loc", fs::perms(geteuid() == 0 ? 0600 : 0));
    const fs::path file = state_ / "zotavpci.ini";
    const std::string options = " --state " + state_.string() + " " + kDump + kDescriptions;
    const std::string names = testsupport::fileText(file);
    for (const bool readable : {true, false}) {
        fs::permissions(file, fs::perms(readable ? 0444 : geteuid() == 0 ? 0600 : 0));
        fs::permissions(state_, fs::perms(0555));
        const auto run = [&](const char* command) {
            return testsupport::runCommand(asOrdinaryUser(command + options));
        };
        const auto listed = run("list");
        EXPECT_TRUE(says(listed, 0, "tavctl: nothing is stored (" + state_.string() + ": "));
        EXPECT_TRUE(says(listed, 0, readable ? "\nTAV1      " : "\nTAV1*     "));
        EXPECT_EQ(listed.output.find("the stored names are not known") == std::string::npos,
                  readable);
        EXPECT_TRUE(says(run("tree"), 0, readable ? "{TAV1: " : "{TAV1*: "));
        for (const auto& [command, answer] :
             {std::pair("names list", "TAVCard1  yes"), std::pair("names check", "no problem")})
            EXPECT_TRUE(readable ? says(run(command), 0, answer)
                                 : says(run(command), 3, "zotavpci.ini): Permission denied"));
        fs::permissions(state_, fs::perms(0755));
        fs::permissions(file, fs::perms(0600));
        EXPECT_EQ(testsupport::fileText(file), names);
        EXPECT_TRUE(fs::is_empty(temporary_));
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(state_), {}), 2) << "the names and their lock";
}

} // namespace
