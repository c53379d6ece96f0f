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

    // Whether opening a file to write it in place leaves it as it is, as on Linux, or empties it.
    bool keepsContent() {
        folder.write("probe", "x");
        files.close(files.openInPlace(folder.file("probe").c_str()).stream);
        const bool keeps = folder.read("probe") == "x";
        std::filesystem::remove(folder.file("probe"));
        return keeps;
    }

    testsupport::FileFolder folder;
    TestFiles files;
    IniFileOwner file{createIniFile()};
};

TEST_F(IniSafeWriteTest, AnExistingTargetIsReplacedThroughANumberedFile) {
    folder.write("t.ini", kOld);
    ASSERT_EQ(write(), kIniDone);
    EXPECT_EQ(files.calls, (Calls{"follow t.ini", "open t.ini r+b", "create ini$$0.TMP", "access",
                                  "secure 12", "write", "flush", "cut 12", "close", "close",
                                  "rename ini$$0.TMP t.ini", "time t.ini"}));
    EXPECT_EQ(folder.read("t.ini"), kNew);
    EXPECT_EQ(folder.fileCount(), 1U);
}

TEST_F(IniSafeWriteTest, AMissingTargetIsCreatedAndDeletedFirst) {
    ASSERT_EQ(write(), kIniDone);
    EXPECT_EQ(files.calls,
              (Calls{"follow t.ini", "open t.ini r+b", "time t.ini", "open t.ini", "close",
                     "remove t.ini", "create ini$$0.TMP", "secure 12", "write", "flush", "cut 12",
                     "close", "rename ini$$0.TMP t.ini", "time t.ini"}));
    EXPECT_EQ(folder.read("t.ini"), kNew);
}

TEST_F(IniSafeWriteTest, TheOtherTemporaryIsTheTargetWithTheExtensionTmp) {
    folder.write("t.ini", kOld);
    file->write.sameDirectoryTemporary = false;
    ASSERT_EQ(write(), kIniDone);
    EXPECT_EQ(files.calls,
              (Calls{"follow t.ini", "open t.ini r+b", "open t.TMP", "secure 12", "write", "flush",
                     "cut 12", "close", "close", "rename t.TMP t.ini", "time t.ini"}));
    EXPECT_EQ(folder.read("t.ini"), kNew);
    EXPECT_EQ(folder.fileCount(), 1U);
}

TEST_F(IniSafeWriteTest, WithoutSafeWriteTheTargetItselfIsWritten) {
    folder.write("t.ini", kOld);
    file->write.safeWrite = false;
    ASSERT_EQ(write(), kIniDone);
    EXPECT_EQ(files.calls, (Calls{"open t.ini rb", "close", "open t.ini", "secure 12", "write",
                                  "flush", "cut 12", "close", "time t.ini"}));
    EXPECT_EQ(folder.read("t.ini"), kNew);
}

TEST_F(IniSafeWriteTest, TheFlushOptionForcesTheFileOntoTheDisk) {
    file->write.safeWrite = false;
    file->write.flush = true;
    ASSERT_EQ(write(), kIniDone);
    EXPECT_EQ(files.calls, (Calls{"open t.ini rb", "open t.ini", "secure 12", "write", "flush",
                                  "cut 12", "force", "close", "time t.ini"}));
}

TEST_F(IniSafeWriteTest, EachFailingStepOverAnExistingTargetLeavesIt) {
    file->write.flush = true;
    EXPECT_EQ(failEach(true),
              (Statuses{-13, -13, -5, -13, -28, -28, -28, -28, -28, -28, 0, -13, 0}));
}

TEST_F(IniSafeWriteTest, EachFailingStepForAMissingTargetLeavesNone) {
    // Opening and looking fail anyway. What cannot be deleted stays, empty.
    EXPECT_EQ(failEach(false, {{6, ""}}),
              (Statuses{-13, 0, 0, -13, -13, -13, -5, -28, -28, -28, -28, -28, -13, 0}));
}

TEST_F(IniSafeWriteTest, EachFailingStepThroughTheOtherTemporaryLeavesTheTarget) {
    file->write.sameDirectoryTemporary = false;
    EXPECT_EQ(failEach(true), (Statuses{-13, -13, -5004, -28, -28, -28, -28, -28, 0, -13, 0}));
}

TEST_F(IniSafeWriteTest, AFailedWriteInPlaceDeletesTheTarget) {
    file->write.safeWrite = false;
    file->write.flush = true;
    // A target that cannot be opened, or has no room, is as it was; one that cannot be read is
    // written all the same.
    EXPECT_EQ(failEach(true, {{4, keepsContent() ? kOld : ""},
                              {5, "none"},
                              {6, "none"},
                              {7, "none"},
                              {8, "none"},
                              {9, "none"}}),
              (Statuses{0, 0, -5004, -28, -28, -28, -28, -28, -28, 0}));
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
    std::filesystem::remove(folder.file("t.ini"));
    for (std::size_t n = 4; n <= 8; ++n) {
        files.failAt(n);
        EXPECT_EQ(write(), -28);
        EXPECT_EQ(files.calls.size(), n + 2) << "nothing is written after the failure";
        EXPECT_EQ(folder.fileCount(), 0U);
    }
}

// What stays is not written: whoever kills the process meanwhile can only cost what is new.
TEST_F(IniSafeWriteTest, InPlaceWritingBeginsWhereTheContentDiffers) {
    file->write.safeWrite = false;
    const bool keeps = keepsContent();
    const std::string behind = std::string(200000, ';') + "\r\n";
    for (const auto& [old, written] : std::map<std::string, std::string>{
             {"", kNew},                              // all of it
             {"[a]\r\n", "x = 1\r\n"},                // what is missing at the end
             {"[a]\r\nx = 2\r\n", "1\r\n"},           // from the first other byte on
             {"[b]\r\nx = 1\r\n", "a]\r\nx = 1\r\n"}, // the same
             {kNew + behind, ""}}) {                  // what is too much is cut off
        folder.write("t.ini", old);
        files.failAt(0);
        files.written.clear();
        ASSERT_EQ(write(), kIniDone);
        EXPECT_EQ(files.written, keeps ? written : kNew);
        EXPECT_EQ(folder.read("t.ini"), kNew);
    }
}

TEST_F(IniSafeWriteTest, InPlaceNothingIsWrittenWhereTheBytesAreTheSame) {
    file->write.safeWrite = false;
    folder.write("t.ini", kNew);
    ASSERT_EQ(write(), kIniDone);
    EXPECT_EQ(files.calls, (Calls{"open t.ini rb", "close", "time t.ini"}));
    EXPECT_EQ(file->path.view(), folder.file("t.ini"));
    files.failAt(0);
    ASSERT_EQ(writeIni(*file, folder.file("t.ini").c_str(), files, IniRewrite::always), kIniDone);
    EXPECT_EQ(std::count(files.calls.begin(), files.calls.end(), "write"), 1);
    EXPECT_EQ(files.written, kNew);
}

TEST_F(IniSafeWriteTest, TheSystemsReasonIsKeptUntilTheNextWrite) {
    files.failAt(2);
    folder.write("t.ini", kOld);
    EXPECT_EQ(write(), -13);
    EXPECT_EQ(file->failure, TestFiles::kFailure);
    EXPECT_EQ(write(), kIniDone);
    EXPECT_EQ(file->failure, platform::kNoSystemError);
    for (std::size_t n = 1; n < 12; ++n) {
        folder.write("t.ini", kOld);
        files.failAt(n);
        EXPECT_EQ(file->failure,
                  write() == kIniDone ? platform::kNoSystemError : TestFiles::kFailure)
            << n;
    }
    EXPECT_EQ(writeIni(*file, "", files), -22);
    EXPECT_EQ(file->failure, platform::kNoSystemError) << "it was not the system";
}

// It was created, and something else has its place before it can be opened.
TEST_F(IniSafeWriteTest, ATemporaryThatCannotBeOpenedIsRemoved) {
    class Files : public TestFiles {
    public:
        IniCreated createExclusively(const char* path) noexcept override {
            IniCreated created = TestFiles::createExclusively(path);
            real_.close(created.stream);
            return {{nullptr, kFailure}, false, true};
        }
    };
    Files unlucky;
    folder.write("t.ini", kOld);
    EXPECT_EQ(writeIni(*file, folder.file("t.ini").c_str(), unlucky), -5004);
    EXPECT_EQ(folder.read("t.ini"), kOld);
    EXPECT_EQ(folder.fileCount(), 1U);
}

TEST_F(IniSafeWriteTest, WithoutMemoryNothingIsTouched) {
    TestMemory memory;
    IniFileOwner small(createIniFile(memory.memory()));
    ASSERT_EQ(setValue(*small, "a", "x", "1", kNoQuote), kIniStored);
    folder.write("t.ini", kOld);
    for (const bool safe : {true, false}) {
        small->write.safeWrite = safe;
        for (int request = 1; request <= 3; ++request) {
            memory.failAt(request);
            EXPECT_EQ(writeIni(*small, folder.file("t.ini").c_str(), files), -12);
            EXPECT_TRUE(platform::isOutOfMemory(small->failure));
            EXPECT_EQ(folder.read("t.ini"), kOld);
            EXPECT_EQ(folder.fileCount(), 1U);
        }
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
    EXPECT_EQ(files.calls.size(), 1003U);
    EXPECT_EQ(files.calls.at(1001), "create ini$$999.TMP");
    EXPECT_EQ(folder.read("t.ini"), kOld);
    std::filesystem::remove(folder.file("ini$$999.TMP"));
    EXPECT_EQ(write(), kIniDone);
}

TEST_F(IniSafeWriteTest, RemembersPathAndTimeOfTheLastSuccess) {
    ASSERT_EQ(write(), kIniDone);
    EXPECT_EQ(file->path.view(), folder.file("t.ini"));
    EXPECT_EQ(file->lastWriteTime, platform::lastWriteTime(folder.file("t.ini").c_str()));
    const platform::FileTime time = file->lastWriteTime;
    files.failAt(2);
    EXPECT_EQ(write("other.ini"), kIniDone); // a missing one cannot be opened anyway
    EXPECT_EQ(file->path.view(), folder.file("other.ini"));
    EXPECT_EQ(write("none/other.ini"), -13);
    EXPECT_EQ(file->path.view(), folder.file("other.ini"));
    EXPECT_GE(file->lastWriteTime, time);
}

TEST_F(IniSafeWriteTest, AFileThatIsGoneAtOnceHasNoTime) {
    ASSERT_EQ(write(), kIniDone);
    const std::size_t calls = 12;
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
