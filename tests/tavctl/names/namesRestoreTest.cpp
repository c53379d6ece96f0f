// tavctl names restore and undo: nothing takes a device's name by accident, and everything can be
// taken back.
#include "tests/tavctl/names/namesOfSample.h"
#include "tests/tavctl/sample.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;

constexpr const char* kOtherNames = "[MR00:00,20]\r\nModel = TAV-B3 Switch Box\r\n"
                                    "TerminalName = TAV7\r\n";

class NamesRestore : public testing::Test {
protected:
    [[nodiscard]] std::string before() const {
        return names_.folder.read("state/zotavpci.ini.before");
    }
    [[nodiscard]] bool hasBefore() const {
        return fs::exists(names_.folder.file("state/zotavpci.ini.before"));
    }
    [[nodiscard]] testsupport::CommandResult run(const std::string& words) const {
        return runTavctl("names " + words + " " + names_.options);
    }
    void expectRefused(const std::string& source, const std::string& reason) const {
        const std::string stored = names_.stored();
        EXPECT_TRUE(says(run("restore " + source), 1, reason));
        EXPECT_EQ(names_.stored(), stored);
        EXPECT_FALSE(hasBefore());
    }

    NamesOfSample names_;
    std::string first_ = names_.stored();
};

TEST_F(NamesRestore, WithoutNamesTakesForce) {
    const std::string reason = "): it has no names; --force restores it and forgets all of them\n";
    expectRefused("/dev/null", "tavctl: restore terminal names (/dev/null" + reason);
    expectRefused(kSample, kSample + reason);
    expectRefused(names_.folder.write("notes.txt", "Nothing to see here.\n"), reason);
    EXPECT_TRUE(says(run("restore --force /dev/null"), 0, "restored 0 names: "));
    EXPECT_EQ(names_.stored(), "");
    EXPECT_EQ(before(), first_);
}

TEST_F(NamesRestore, NamesTheDevicesThatWouldLoseTheirNames) {
    expectRefused(names_.folder.write("saved.ini", kOtherNames),
                  "saved.ini): TAV1 (TAV-B3 Switch Box, MR00:00,20) would be named TAV7, "
                  "TAV2 (TAV-B3 Switch Box, MR00:00,28) would lose its name, "
                  "TAVCard1 (TAV-C1 Adapter Card, MR00:08,00,08,00,20) would lose its name, "
                  "TAV3 (TAV-W7 Wide Switch Box, MR40:00,08) would lose its name; "
                  "--force restores it all the same\n");
}

TEST_F(NamesRestore, OfAbsentDevicesNeedsNoForce) {
    names_.store(first_ + "[MR00:77]\r\nModel = X\r\nTerminalName = X1\r\n");
    EXPECT_TRUE(
        says(run("restore " + names_.folder.write("saved.ini", first_)), 0, "restored 4 names: "));
    EXPECT_EQ(names_.stored(), first_);
}

TEST_F(NamesRestore, CountsEveryNameWhereTheDevicesAreNotKnown) {
    names_.store(first_ + "[MR00:77]\r\nModel = X\r\nTerminalName = X1\r\n");
    const std::string saved = names_.folder.write("saved.ini", first_);
    const std::string loss = "X1 (X, MR00:77) would lose its name; --force restores it all the "
                             "same\n";
    expectRefused("--stored " + saved,
                  "the bus is not looked at, so every stored name counts: " + loss);
    const std::string damaged = names_.folder.write("damaged.dump", "00:00.0\n00: zz\n");
    const auto result = runTavctl("names restore " + saved + " --dump " + damaged + " " +
                                  kDescriptions + "--state " + names_.folder.file("state"));
    EXPECT_TRUE(says(result, 1, "saved.ini): the devices cannot be looked for ("));
    EXPECT_TRUE(says(result, 1, "), so every stored name counts: " + loss));
}

TEST_F(NamesRestore, OfWhatIsThereChangesNothing) {
    const std::string saved = names_.folder.write("saved.ini", first_);
    const auto time = fs::last_write_time(names_.folder.file("state/zotavpci.ini"));
    EXPECT_TRUE(says(run("restore " + saved), 0, " holds these names already\n"));
    EXPECT_EQ(outputOf("names restore --force --json " + saved + " " + names_.options),
              "{\"version\":1,\"restored\":0}\n");
    EXPECT_EQ(fs::last_write_time(names_.folder.file("state/zotavpci.ini")), time);
    EXPECT_FALSE(hasBefore());
}

TEST_F(NamesRestore, KeepsTheFileAsItWasWithItsAccess) {
    const std::string byHand = "; by hand\n[MR00:00,20]\nModel=TAV-B3 Switch Box\n"
                               "TerminalName=TAV1\n";
    names_.store(byHand);
    fs::permissions(names_.folder.file("state/zotavpci.ini"), fs::perms(0640));
    const std::string saved = names_.folder.write("saved.ini", kOtherNames);
    EXPECT_TRUE(says(run("restore --force " + saved), 0, "restored 1 name: "));
    EXPECT_EQ(before(), byHand);
    EXPECT_EQ(fs::status(names_.folder.file("state/zotavpci.ini.before")).permissions(),
              fs::perms(0640));
}

TEST_F(NamesRestore, WithoutAPlaceForTheNamesBeforeChangesNothing) {
    fs::create_directory(names_.folder.file("state/zotavpci.ini.before"));
    const std::string saved = names_.folder.write("saved.ini", kOtherNames);
    EXPECT_TRUE(says(run("restore --force " + saved), 3, "tavctl: keep terminal names ("));
    EXPECT_EQ(names_.stored(), first_);
}

TEST_F(NamesRestore, IsUndoneAndDoneAgain) {
    const std::string saved = names_.folder.write("saved.ini", kOtherNames);
    ASSERT_EQ(run("restore --force " + saved).exitStatus, 0);
    ASSERT_EQ(names_.stored(), kOtherNames);
    EXPECT_TRUE(says(run("undo"), 0,
                     "restored 4 names: " + names_.folder.file("state/zotavpci.ini") + "\n"));
    EXPECT_EQ(names_.stored(), first_);
    EXPECT_EQ(before(), kOtherNames);
    EXPECT_TRUE(says(run("undo --json"), 0, "{\"version\":1,\"restored\":1}\n"));
    EXPECT_EQ(names_.stored(), kOtherNames);
    EXPECT_EQ(before(), first_);
    std::size_t files = 0;
    for (const auto& entry : fs::directory_iterator(names_.folder.file("state")))
        files += entry.is_regular_file() ? 1U : 0U;
    EXPECT_EQ(files, 3U) << "names, names before, and their lock";
}

TEST_F(NamesRestore, UndoSaysWhenThereIsNothingToUndo) {
    EXPECT_TRUE(says(run("undo"), 1, "there is nothing to undo: no file "));
    names_.folder.write("state/zotavpci.ini.before", first_);
    EXPECT_TRUE(says(run("undo"), 1,
                     "there is nothing to undo: what is kept from before is the "
                     "same\n"));
    EXPECT_EQ(names_.stored(), first_);
}

TEST(NamesRestoreAtFirst, IsUndoneToNoNames) {
    const NamesOfSample names(false);
    const std::string saved = names.folder.write("saved.ini", kOtherNames);
    ASSERT_EQ(runTavctl("names restore " + saved + " " + names.options).exitStatus, 0);
    EXPECT_TRUE(says(runTavctl("names undo " + names.options), 0, "restored 0 names: "));
    EXPECT_EQ(names.stored(), "");
    EXPECT_TRUE(says(runTavctl("names undo " + names.options), 0, "restored 1 name: "));
    EXPECT_EQ(names.stored(), kOtherNames);
}

} // namespace
