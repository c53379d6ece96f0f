// Saving on Windows' own file system: read-only targets, targets that others hold, temporary names
// and times.
#include "platform/file.h"
#include "pxidrivertools/cIniFile.h"
#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniSafeWrite.h"
#include "pxidrivertools/ini/iniUpdate.h"
#include "tests/support/fileFolder.h"
#include "tests/windows/importedFunction.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <io.h>
#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;
using nZOQUIL000::tFixedStatus;
using testing::ElementsAre;
using testwindows::ImportedFunction;

constexpr const char* kOld = "[a]\r\nx = old\r\n";
constexpr const char* kNew = "[a]\r\nx = new\r\n";

// A file that somebody has open, sharing it so far.
class OpenElsewhere {
public:
    OpenElsewhere(const std::string& path, DWORD sharing)
        : handle_(CreateFileA(path.c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING, 0,
                              nullptr)) {
        EXPECT_NE(handle_, INVALID_HANDLE_VALUE);
    }
    ~OpenElsewhere() { CloseHandle(handle_); }
    OpenElsewhere(const OpenElsewhere&) = delete;
    OpenElsewhere& operator=(const OpenElsewhere&) = delete;

private:
    HANDLE handle_;
};

// A file with the read-only attribute while it lives.
class ReadOnly {
public:
    explicit ReadOnly(std::string path) : path_(std::move(path)) {
        EXPECT_TRUE(SetFileAttributesA(path_.c_str(), FILE_ATTRIBUTE_READONLY));
    }
    ~ReadOnly() { SetFileAttributesA(path_.c_str(), FILE_ATTRIBUTE_NORMAL); }
    ReadOnly(const ReadOnly&) = delete;
    ReadOnly& operator=(const ReadOnly&) = delete;

private:
    std::string path_;
};

class WindowsIniFile : public testing::Test {
protected:
    WindowsIniFile() {
        folder_.write("file.ini", kOld);
        tFixedStatus status;
        file_.open(path_.c_str(), 0, status);
        file_.setString("a", "x", "new", status);
        EXPECT_EQ(status.code, 0);
    }
    std::int32_t save() {
        tFixedStatus status;
        file_.save(status);
        return status.code;
    }

    testsupport::FileFolder folder_;
    std::string path_ = folder_.file("file.ini");
    cIniFile file_;
};

TEST_F(WindowsIniFile, SaveOntoAReadOnlyFileFailsAndLeavesIt) {
    {
        const ReadOnly readOnly(path_);
        EXPECT_EQ(save(), -313319);
        EXPECT_EQ(folder_.read("file.ini"), kOld);
        EXPECT_EQ(folder_.fileCount(), 1U);
    }
    EXPECT_EQ(save(), 0);
    EXPECT_EQ(folder_.read("file.ini"), kNew);
}

TEST_F(WindowsIniFile, SaveOntoAFileThatIsNotSharedFailsAndLeavesIt) {
    for (const DWORD sharing : {DWORD{0}, DWORD{FILE_SHARE_READ}}) {
        const OpenElsewhere reader(path_, sharing);
        EXPECT_EQ(save(), -313319);
    }
    EXPECT_EQ(folder_.read("file.ini"), kOld);
    const OpenElsewhere reader(path_, FILE_SHARE_READ | FILE_SHARE_WRITE);
    EXPECT_EQ(save(), 0);
    EXPECT_EQ(folder_.read("file.ini"), kNew);
}

TEST_F(WindowsIniFile, OpenOfAFileThatIsNotSharedFails) {
    const OpenElsewhere other(path_, 0);
    tFixedStatus status;
    cIniFile file;
    file.open(path_.c_str(), 0, status);
    EXPECT_EQ(status.code, -313316);
}

TEST_F(WindowsIniFile, APathOutsideTheCodePageOpensAndSaves) {
    const fs::path strange = fs::path(path_).parent_path() / L"\u65E5.ini";
    fs::copy_file(path_, strange);
    const std::u8string text = strange.u8string();
    const std::string utf8Path(text.begin(), text.end());
    for (const std::string expected : {"old", "1", "2"}) {
        tFixedStatus status;
        cIniFile file;
        if (expected == "1")
            file.open(strange.c_str(), 0, status);
        else
            file.open(utf8Path.c_str(), 0, status);
        std::string value;
        file.getString("a", "x", value, status);
        EXPECT_EQ(value, expected);
        EXPECT_FALSE(file.fileChanged(status));
        file.setString("a", "x", expected == "old" ? "1" : "2", status);
        file.save(status);
        EXPECT_EQ(status.code, 0);
    }
    EXPECT_EQ(folder_.fileCount(), 2U) << "nothing was written elsewhere";
    EXPECT_EQ(folder_.read("file.ini"), kOld);
}

// The time in the system's units of 100 nanoseconds.
void setTime(const std::string& path, std::uint64_t time) {
    const HANDLE file = CreateFileA(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    const FILETIME written = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    EXPECT_TRUE(SetFileTime(file, nullptr, nullptr, &written));
    CloseHandle(file);
}

TEST_F(WindowsIniFile, SeesThatTheFileHasChanged) {
    tFixedStatus status;
    EXPECT_FALSE(file_.fileChanged(status));
    const std::uint64_t time = platform::lastWriteTime(path_.c_str()).value();
    setTime(path_, time + 1);
    EXPECT_TRUE(file_.fileChanged(status)) << "by the smallest step that there is";
    setTime(path_, time - 10000000);
    EXPECT_TRUE(file_.fileChanged(status));
    setTime(path_, time);
    EXPECT_FALSE(file_.fileChanged(status));
    fs::remove(path_);
    EXPECT_TRUE(file_.fileChanged(status));
    EXPECT_EQ(status.code, 0);
}

TEST_F(WindowsIniFile, ConfirmedSavesAllChangeTheTime) {
    tFixedStatus status;
    file_.setConfirmSave(1, status);
    auto before = platform::lastWriteTime(path_.c_str());
    for (int n = 0; n < 5; ++n) {
        ASSERT_EQ(save(), 0);
        const auto after = platform::lastWriteTime(path_.c_str());
        EXPECT_NE(after, before);
        before = after;
    }
}

class WindowsSafeWrite : public testing::Test {
protected:
    WindowsSafeWrite() {
        EXPECT_EQ(setValue(*file_, "a", "x", "new", kNoQuote), kIniStored);
        folder_.write("t.ini", kOld);
    }
    IniStatus write() { return writeIni(*file_, path_.c_str()); }
    // The target as it was, and nothing beside it but what a test put there.
    void expectUntouched(std::size_t files = 1) {
        EXPECT_EQ(folder_.read("t.ini"), kOld);
        EXPECT_EQ(folder_.fileCount(), files);
    }

    testsupport::FileFolder folder_;
    std::string path_ = folder_.file("t.ini");
    IniFileOwner file_{createIniFile()};
};

TEST_F(WindowsSafeWrite, ReplacesAnExistingFile) {
    EXPECT_EQ(write(), kIniDone);
    EXPECT_EQ(folder_.read("t.ini"), kNew);
    EXPECT_EQ(folder_.fileCount(), 1U);
    EXPECT_EQ(file_->lastWriteTime, platform::lastWriteTime(path_.c_str()));
}

TEST_F(WindowsSafeWrite, ReplacesAFileThroughTheOtherTemporary) {
    file_->write.sameDirectoryTemporary = false;
    EXPECT_EQ(write(), kIniDone);
    EXPECT_EQ(folder_.read("t.ini"), kNew);
    EXPECT_EQ(folder_.fileCount(), 1U);
}

TEST_F(WindowsSafeWrite, ReplacesAFileOutsideTheCodePage) {
    const fs::path strange = fs::path(path_).parent_path() / L"\u65E5.ini";
    fs::rename(path_, strange);
    const std::u8string text = strange.u8string();
    EXPECT_EQ(writeIni(*file_, std::string(text.begin(), text.end()).c_str()), kIniDone);
    EXPECT_EQ(folder_.fileCount(), 1U);
    fs::rename(strange, path_);
    EXPECT_EQ(folder_.read("t.ini"), kNew);
}

TEST_F(WindowsSafeWrite, MakesAMissingFile) {
    fs::remove(path_);
    EXPECT_EQ(write(), kIniDone);
    EXPECT_EQ(folder_.read("t.ini"), kNew);
    EXPECT_EQ(folder_.fileCount(), 1U);
}

TEST_F(WindowsSafeWrite, OfAReadOnlyTargetIsRefused) {
    const ReadOnly readOnly(path_);
    EXPECT_EQ(write(), -13);
    expectUntouched();
}

TEST_F(WindowsSafeWrite, OfATargetThatIsNotSharedIsRefused) {
    const OpenElsewhere other(path_, 0);
    EXPECT_EQ(write(), -13);
    EXPECT_EQ(folder_.fileCount(), 1U);
}

// It can be written, so the probe passes; but not replaced, since its reader shares no deletion.
TEST_F(WindowsSafeWrite, OfATargetThatCannotBeReplacedLeavesNoTemporary) {
    {
        const OpenElsewhere reader(path_, FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_EQ(write(), -13);
    }
    expectUntouched();
}

TEST_F(WindowsSafeWrite, TakenTemporaryNamesArePassedOver) {
    folder_.write("ini$$0.TMP", "theirs");
    EXPECT_EQ(write(), kIniDone);
    EXPECT_EQ(folder_.read("t.ini"), kNew);
    EXPECT_EQ(folder_.read("ini$$0.TMP"), "theirs");
    EXPECT_EQ(folder_.fileCount(), 2U);
}

// How files are created and replaced.
struct FileCalls {
    static inline std::vector<std::string> made;
    static inline DWORD createError = ERROR_SUCCESS;
    static inline BOOL flushed = TRUE;
    static inline decltype(&CreateFileA) realCreate = nullptr;
    static inline decltype(&MoveFileExA) realMove = nullptr;
    static inline decltype(&FlushFileBuffers) realFlush = nullptr;

    static std::string nameOf(const std::string& path) {
        return fs::path(path).filename().string();
    }
    static HANDLE WINAPI create(LPCSTR path, DWORD access, DWORD sharing,
                                LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
                                HANDLE model) {
        made.push_back("create " + nameOf(path) + " " + std::to_string(sharing) + " " +
                       std::to_string(disposition) + " " + std::to_string(flags));
        if (createError == ERROR_SUCCESS)
            return realCreate(path, access, sharing, security, disposition, flags, model);
        SetLastError(createError);
        return INVALID_HANDLE_VALUE;
    }
    static BOOL WINAPI move(LPCSTR from, LPCSTR to, DWORD flags) {
        made.push_back("move " + nameOf(from) + " " + nameOf(to) + " " + std::to_string(flags));
        return realMove(from, to, flags);
    }
    static BOOL WINAPI flush(HANDLE file) {
        made.emplace_back("flush");
        return flushed && realFlush(file);
    }

    FileCalls() {
        made.clear();
        createError = ERROR_SUCCESS;
        flushed = TRUE;
        realCreate = reinterpret_cast<decltype(realCreate)>(create_.real());
        realMove = reinterpret_cast<decltype(realMove)>(move_.real());
        realFlush = reinterpret_cast<decltype(realFlush)>(flush_.real());
    }

private:
    ImportedFunction create_{"CreateFileA", reinterpret_cast<void*>(&create)};
    ImportedFunction move_{"MoveFileExA", reinterpret_cast<void*>(&move)};
    ImportedFunction flush_{"FlushFileBuffers", reinterpret_cast<void*>(&flush)};
};

TEST_F(WindowsSafeWrite, CreatesExclusivelyFlushesAndReplaces) {
    folder_.write("ini$$0.TMP", "theirs");
    file_->write.flush = true;
    const FileCalls calls;
    EXPECT_EQ(write(), kIniDone);
    // Not shared, only new, with normal attributes; replacing what is there.
    EXPECT_THAT(FileCalls::made,
                ElementsAre("create ini$$0.TMP 0 1 128", "create ini$$1.TMP 0 1 128", "flush",
                            "move ini$$1.TMP t.ini 1"));
    EXPECT_EQ(folder_.read("t.ini"), kNew);
}

TEST_F(WindowsSafeWrite, AnotherReasonThanATakenNameEndsTheSearch) {
    const FileCalls calls;
    for (const DWORD code : {ERROR_ACCESS_DENIED, ERROR_PATH_NOT_FOUND}) {
        FileCalls::made.clear();
        FileCalls::createError = code;
        EXPECT_EQ(write(), -5);
        EXPECT_EQ(FileCalls::made.size(), 1U);
    }
    FileCalls::made.clear();
    FileCalls::createError = ERROR_FILE_EXISTS;
    EXPECT_EQ(write(), -5003);
    EXPECT_EQ(FileCalls::made.size(), 1000U);
    expectUntouched();
}

TEST_F(WindowsSafeWrite, WhatCannotBeForcedToDiskIsNotKept) {
    file_->write.flush = true;
    const FileCalls calls;
    FileCalls::flushed = FALSE;
    EXPECT_EQ(write(), -28);
    expectUntouched();
}

TEST(WindowsFile, TimesAreThoseOfTheFolderEntry) {
    const testsupport::FileFolder folder;
    const std::string path = folder.write("file", "x");
    WIN32_FIND_DATAA entry = {};
    const HANDLE search = FindFirstFileA(path.c_str(), &entry);
    ASSERT_NE(search, INVALID_HANDLE_VALUE);
    FindClose(search);
    const std::uint64_t expected = std::uint64_t{entry.ftLastWriteTime.dwHighDateTime} << 32 |
                                   entry.ftLastWriteTime.dwLowDateTime;
    EXPECT_EQ(platform::lastWriteTime(path.c_str()), expected);
    EXPECT_EQ(platform::lastWriteTime(folder.file("missing").c_str()), std::nullopt);
    platform::FileTime time = 7;
    EXPECT_EQ(readTimestamp("", time), -4);
    EXPECT_EQ(readTimestamp(folder.file("missing").c_str(), time), -22);
    EXPECT_EQ(time, 7U);
    EXPECT_EQ(readTimestamp(path.c_str(), time), kIniDone);
    EXPECT_EQ(time, expected);
}

TEST(WindowsFile, PathsHaveDrives) {
    const auto parts = [](const char* path) {
        const platform::PathParts split = platform::splitPath(path);
        return std::vector<std::string>{split.drive, split.directory, split.name, split.extension};
    };
    EXPECT_THAT(parts("C:\\a.b\\c.d.ini"), ElementsAre("C:", "\\a.b\\", "c.d", ".ini"));
    EXPECT_THAT(parts("C:file"), ElementsAre("C:", "", "file", ""));
    EXPECT_THAT(parts("\\\\host\\share\\x.y"), ElementsAre("", "\\\\host\\share\\", "x", ".y"));
    EXPECT_THAT(parts("a/b\\c"), ElementsAre("", "a/b\\", "c", ""));
    EXPECT_THAT(parts(".ini"), ElementsAre("", "", "", ".ini"));
}

} // namespace
