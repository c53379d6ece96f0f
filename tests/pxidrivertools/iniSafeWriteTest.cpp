// Writing back: which files are touched in which order, and what is left when any step fails.
#include "pxidrivertools/ini/iniSafeWrite.h"

#include "tests/pxidrivertools/iniHelpers.h"
#include "tests/support/fileFolder.h"

#include <map>

namespace {

using namespace ini;
using Calls = std::vector<std::string>;
using Statuses = std::vector<IniStatus>;

constexpr const char* kOld = "old content";
constexpr const char* kNew = "[a]\r\nx = 1\r\n";

class IniSafeWriteTest : public testing::Test {
protected:
    IniSafeWriteTest() { EXPECT_EQ(setValue(*file, "a", "x", "1", kNoQuote), kIniStored); }
    IniStatus write(const std::string& name = "t.ini") {
        return writeIni(*file, folder.file(name).c_str(), files);
    }
    // Fails each operation of a write once. What is in the folder must be the old state (nothing
    // but the target, with its old content) after every failure, unless the failed operation is
    // listed with another state.
    Statuses failEach(bool exists, const std::map<std::size_t, std::string>& leaves = {}) {
        Statuses statuses;
        for (std::size_t n = 1;; ++n) {
            std::filesystem::remove(folder.file("t.ini"));
            if (exists)
                folder.write("t.ini", kOld);
            files.failAt(n);
            const IniStatus status = write();
            if (files.calls.size() < n) {
                EXPECT_EQ(status, kIniDone);
                return statuses;
            }
            statuses.push_back(status);
            const std::string state = folder.has("t.ini") ? folder.read("t.ini") : "none";
            const std::string old = exists ? kOld : "none";
            const auto other = leaves.find(n);
            EXPECT_EQ(state, status == kIniDone      ? kNew
                             : other != leaves.end() ? other->second
                                                     : old)
                << "operation " << n;
            EXPECT_EQ(folder.fileCount(), state == "none" ? 0U : 1U) << "operation " << n;
        }
    }

    testsupport::FileFolder folder;
    TestFiles files;
    IniFileOwner file{createIniFile()};
};

TEST_F(IniSafeWriteTest, AnExistingTargetIsReplacedThroughANumberedFile) {
    folder.write("t.ini", kOld);
    ASSERT_EQ(write(), kIniDone);
    EXPECT_EQ(files.calls,
              (Calls{"open t.ini r+b", "close", "create ini$$0.TMP", "open ini$$0.TMP wb", "write",
                     "flush", "close", "rename ini$$0.TMP t.ini", "time t.ini"}));
    EXPECT_EQ(folder.read("t.ini"), kNew);
    EXPECT_EQ(folder.fileCount(), 1U);
}

TEST_F(IniSafeWriteTest, AMissingTargetIsCreatedAndDeletedFirst) {
    ASSERT_EQ(write(), kIniDone);
    EXPECT_EQ(files.calls,
              (Calls{"open t.ini r+b", "time t.ini", "open t.ini wb", "close", "remove t.ini",
                     "create ini$$0.TMP", "open ini$$0.TMP wb", "write", "flush", "close",
                     "rename ini$$0.TMP t.ini", "time t.ini"}));
    EXPECT_EQ(folder.read("t.ini"), kNew);
}

TEST_F(IniSafeWriteTest, TheOtherTemporaryIsTheTargetWithTheExtensionTmp) {
    folder.write("t.ini", kOld);
    file->write.sameDirectoryTemporary = false;
    ASSERT_EQ(write(), kIniDone);
    EXPECT_EQ(files.calls, (Calls{"open t.ini r+b", "close", "open t.TMP wb", "write", "flush",
                                  "close", "rename t.TMP t.ini", "time t.ini"}));
    EXPECT_EQ(folder.read("t.ini"), kNew);
    EXPECT_EQ(folder.fileCount(), 1U);
}

TEST_F(IniSafeWriteTest, WithoutSafeWriteTheTargetItselfIsWritten) {
    folder.write("t.ini", kOld);
    file->write.safeWrite = false;
    ASSERT_EQ(write(), kIniDone);
    EXPECT_EQ(files.calls, (Calls{"open t.ini wb", "write", "flush", "close", "time t.ini"}));
    EXPECT_EQ(folder.read("t.ini"), kNew);
}

TEST_F(IniSafeWriteTest, TheFlushOptionForcesTheFileOntoTheDisk) {
    file->write.safeWrite = false;
    file->write.flush = true;
    ASSERT_EQ(write(), kIniDone);
    EXPECT_EQ(files.calls,
              (Calls{"open t.ini wb", "write", "flush", "force", "close", "time t.ini"}));
}

TEST_F(IniSafeWriteTest, EachFailingStepOverAnExistingTargetLeavesIt) {
    file->write.flush = true;
    EXPECT_EQ(failEach(true), (Statuses{-13, -13, -5, -5004, -28, -28, -28, -28, -13, 0}));
}

TEST_F(IniSafeWriteTest, EachFailingStepForAMissingTargetLeavesNone) {
    // Opening and looking fail anyway. What cannot be deleted stays, empty.
    EXPECT_EQ(failEach(false, {{5, ""}}),
              (Statuses{0, 0, -13, -13, -13, -5, -5004, -28, -28, -28, -13, 0}));
}

TEST_F(IniSafeWriteTest, EachFailingStepThroughTheOtherTemporaryLeavesTheTarget) {
    file->write.sameDirectoryTemporary = false;
    EXPECT_EQ(failEach(true), (Statuses{-13, -13, -5004, -28, -28, -28, -13, 0}));
}

TEST_F(IniSafeWriteTest, AFailedWriteInPlaceDeletesTheTarget) {
    file->write.safeWrite = false;
    file->write.flush = true;
    // A target that cannot be opened is as it was.
    EXPECT_EQ(failEach(true, {{2, "none"}, {3, "none"}, {4, "none"}, {5, "none"}}),
              (Statuses{-5004, -28, -28, -28, -28, 0}));
}

TEST_F(IniSafeWriteTest, ContentsThatCannotBeWrittenLeaveTheTarget) {
    folder.write("t.ini", kOld);
    file->write.maximumLineLength = 5;
    ASSERT_EQ(setValue(*file, "a", "long name", "value", kNoQuote), kIniStored);
    EXPECT_EQ(write(), -2);
    EXPECT_EQ(folder.read("t.ini"), kOld);
    EXPECT_EQ(folder.fileCount(), 1U);
    file->write.safeWrite = false;
    EXPECT_EQ(write(), -2);
    EXPECT_EQ(folder.fileCount(), 0U);
}

TEST_F(IniSafeWriteTest, EveryWriteOfALongFileIsChecked) {
    file->write.safeWrite = false;
    file->write.maximumLineLength = kNoMaximumLineLength;
    ASSERT_EQ(setValue(*file, "a", "x", std::string(300000, 'v'), kNoQuote), kIniStored);
    files.failAt(0);
    ASSERT_EQ(write(), kIniDone);
    const auto writes = std::count(files.calls.begin(), files.calls.end(), "write");
    EXPECT_EQ(writes, 5);
    for (std::size_t n = 2; n <= 6; ++n) {
        files.failAt(n);
        EXPECT_EQ(write(), -28);
        EXPECT_EQ(files.calls.size(), n + 2) << "nothing is written after the failure";
        EXPECT_EQ(folder.fileCount(), 0U);
    }
}

TEST_F(IniSafeWriteTest, AnEmptyPathIsInvalid) {
    EXPECT_EQ(writeIni(*file, "", files), -22);
    EXPECT_TRUE(files.calls.empty());
    EXPECT_EQ(file->path.length, 0U);
}

TEST_F(IniSafeWriteTest, ATargetThatIsAFolderOrInNoFolderIsRefused) {
    std::filesystem::create_directory(folder.file("folder.ini"));
    EXPECT_EQ(write("folder.ini"), -13);
    EXPECT_TRUE(folder.has("folder.ini"));
    EXPECT_EQ(write("none/t.ini"), -13);
    file->write.safeWrite = false;
    EXPECT_EQ(write("none/t.ini"), -5004);
    EXPECT_EQ(write("folder.ini"), -5004);
    EXPECT_TRUE(folder.has("folder.ini"));
}

TEST_F(IniSafeWriteTest, TakenTemporaryNamesArePassedOver) {
    folder.write("ini$$0.TMP", "theirs");
    folder.write("ini$$1.TMP", "theirs");
    ASSERT_EQ(write(), kIniDone);
    EXPECT_EQ(folder.read("t.ini"), kNew);
    EXPECT_EQ(folder.read("ini$$0.TMP"), "theirs");
    EXPECT_EQ(folder.fileCount(), 3U);
}

TEST_F(IniSafeWriteTest, AThousandTakenNamesAreTheEnd) {
    folder.write("t.ini", kOld);
    for (int n = 0; n < 1000; ++n)
        folder.write(numbered("ini$$", n) + ".TMP", "");
    EXPECT_EQ(write(), -5003);
    EXPECT_EQ(files.calls.size(), 1002U);
    EXPECT_EQ(files.calls.back(), "create ini$$999.TMP");
    EXPECT_EQ(folder.read("t.ini"), kOld);
    std::filesystem::remove(folder.file("ini$$999.TMP"));
    EXPECT_EQ(write(), kIniDone);
}

TEST_F(IniSafeWriteTest, RemembersPathAndTimeOfTheLastSuccess) {
    ASSERT_EQ(write(), kIniDone);
    EXPECT_EQ(file->path.view(), folder.file("t.ini"));
    EXPECT_EQ(file->lastWriteTime, platform::lastWriteTime(folder.file("t.ini").c_str()));
    const platform::FileTime time = file->lastWriteTime;
    files.failAt(1);
    EXPECT_EQ(write("other.ini"), kIniDone); // a missing one cannot be opened anyway
    EXPECT_EQ(file->path.view(), folder.file("other.ini"));
    EXPECT_EQ(write("none/other.ini"), -13);
    EXPECT_EQ(file->path.view(), folder.file("other.ini"));
    EXPECT_GE(file->lastWriteTime, time);
}

TEST_F(IniSafeWriteTest, AFileThatIsGoneAtOnceHasNoTime) {
    ASSERT_EQ(write(), kIniDone);
    const std::size_t calls = 9;
    files.failAt(calls);
    ASSERT_EQ(write(), kIniDone);
    ASSERT_EQ(files.calls.size(), calls);
    EXPECT_EQ(file->lastWriteTime, 0U);
}

TEST_F(IniSafeWriteTest, TimestampsAreLookedUp) {
    platform::FileTime time = 7;
    EXPECT_EQ(readTimestamp("", time), -4);
    EXPECT_EQ(readTimestamp(folder.file("none.ini").c_str(), time), -22);
    EXPECT_EQ(time, 7U);
    folder.write("t.ini", "");
    EXPECT_EQ(readTimestamp(folder.file("t.ini").c_str(), time), kIniDone);
    EXPECT_EQ(time, platform::lastWriteTime(folder.file("t.ini").c_str()));
}

} // namespace
