// The lock by which processes take turns, on the real calls and against a real second process.
#include "source/cPciTavFilesystem.h"
#include "tests/support/program.h"
#include "tests/support/temporaryFolder.h"
#include "tests/windows/importedFunction.h"
#include "tests/windows/signal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/interprocess/exceptions.hpp>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace nZoTavManagerPciPlugin_15_0;
using boost::interprocess::interprocess_exception;
using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::RunningProgram;
using testwindows::ImportedFunction;
using testwindows::Signal;

template <class Call>
int codeRaisedBy(Call call) {
    try {
        call();
    } catch (const interprocess_exception& exception) {
        return exception.get_native_error();
    }
    return 0;
}

// Sees the product open files. `afterwards` runs after each attempt.
class Openings {
public:
    struct Attempt {
        std::string path;
        DWORD access = 0;
        DWORD sharing = 0;
        DWORD disposition = 0;
        DWORD flags = 0;
        DWORD code = 0;
        HANDLE handle = nullptr;
    };

    Openings() {
        attempts.clear();
        afterwards = nullptr;
        real = reinterpret_cast<decltype(&CreateFileA)>(function_.real());
    }

    static inline std::vector<Attempt> attempts;
    static inline std::function<void(std::size_t)> afterwards; // given the attempt's number, from 1

private:
    static HANDLE WINAPI create(LPCSTR path, DWORD access, DWORD sharing,
                                LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
                                HANDLE model) {
        SetLastError(ERROR_SUCCESS);
        const HANDLE handle = real(path, access, sharing, security, disposition, flags, model);
        const DWORD code = handle == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
        EXPECT_EQ(security, nullptr);
        EXPECT_EQ(model, nullptr);
        attempts.push_back({path, access, sharing, disposition, flags, code, handle});
        if (afterwards)
            afterwards(attempts.size());
        SetLastError(code);
        return handle;
    }

    static inline decltype(&CreateFileA) real = nullptr;
    ImportedFunction function_{"CreateFileA", reinterpret_cast<void*>(&create)};
};

// Sees how long the product pauses after each attempt, whichever of the system's functions the C++
// library waits with.
class Pauses {
public:
    Pauses() {
        lengths.clear();
        realSleep = reinterpret_cast<decltype(&Sleep)>(sleep_.real());
        realWait = reinterpret_cast<decltype(&WaitForSingleObject)>(wait_.real());
    }
    static inline std::vector<DWORD> lengths;

private:
    // What follows the first wait is the rest of one that ended early.
    static void note(DWORD length) {
        if (lengths.size() < Openings::attempts.size())
            lengths.push_back(length);
    }
    static void WINAPI sleep(DWORD length) {
        note(length);
        realSleep(length);
    }
    static DWORD WINAPI wait(HANDLE handle, DWORD length) {
        if (length != 0 && length != INFINITE)
            note(length);
        return realWait(handle, length);
    }

    static inline decltype(&Sleep) realSleep = nullptr;
    static inline decltype(&WaitForSingleObject) realWait = nullptr;
    ImportedFunction sleep_{"Sleep", reinterpret_cast<void*>(&sleep)};
    ImportedFunction wait_{"WaitForSingleObject", reinterpret_cast<void*>(&wait)};
};

// Sees the product lock; `before` runs before the system is asked.
class Locks {
public:
    Locks() {
        calls.clear();
        before = nullptr;
        failure = ERROR_SUCCESS;
        real = reinterpret_cast<decltype(&LockFileEx)>(lock_.real());
        realUnlock = reinterpret_cast<decltype(&UnlockFileEx)>(unlock_.real());
    }
    static inline std::vector<std::string> calls;
    static inline std::function<void()> before;
    static inline DWORD failure = ERROR_SUCCESS;

private:
    static std::string range(DWORD reserved, DWORD low, DWORD high, const OVERLAPPED* start) {
        return " " + std::to_string(reserved) + " " + std::to_string(low) + ":" +
               std::to_string(high) + " from " + std::to_string(start->Offset) + ":" +
               std::to_string(start->OffsetHigh);
    }
    static BOOL WINAPI lock(HANDLE file, DWORD flags, DWORD reserved, DWORD low, DWORD high,
                            LPOVERLAPPED start) {
        calls.push_back("lock " + std::to_string(flags) + range(reserved, low, high, start));
        if (before)
            before();
        if (failure == ERROR_SUCCESS)
            return real(file, flags, reserved, low, high, start);
        SetLastError(failure);
        return FALSE;
    }
    static BOOL WINAPI unlock(HANDLE file, DWORD reserved, DWORD low, DWORD high,
                              LPOVERLAPPED start) {
        calls.push_back("unlock" + range(reserved, low, high, start));
        if (failure == ERROR_SUCCESS)
            return realUnlock(file, reserved, low, high, start);
        SetLastError(failure);
        return FALSE;
    }

    static inline decltype(&LockFileEx) real = nullptr;
    static inline decltype(&UnlockFileEx) realUnlock = nullptr;
    ImportedFunction lock_{"LockFileEx", reinterpret_cast<void*>(&lock)};
    ImportedFunction unlock_{"UnlockFileEx", reinterpret_cast<void*>(&unlock)};
};

constexpr const char* kLockCall = "lock 2 0 4294967295:4294967295 from 0:0";
constexpr const char* kUnlockCall = "unlock 0 4294967295:4294967295 from 0:0";

class WindowsLock : public testing::Test {
protected:
    // Another process that holds the file in one way or the other until it is told to let go.
    class Holder {
    public:
        Holder(const std::string& how, const std::string& file,
               const std::optional<std::string>& marker = std::nullopt) {
            std::vector<std::string> words{how, file, ready_.name(), go_.name()};
            if (marker)
                words.push_back(*marker);
            program_.emplace(TAV_OTHER_PROCESS, words);
            ready_.wait();
        }
        ~Holder() { letGo(); }
        void tell() const { go_.give(); }
        void letGo() {
            tell();
            if (program_) {
                EXPECT_EQ(program_->wait().exitStatus, 0);
            }
            program_.reset();
        }

    private:
        Signal ready_{Signal::uniqueName()};
        Signal go_{Signal::uniqueName()};
        std::optional<RunningProgram> program_;
    };

    // Whether somebody else could take the lock now.
    [[nodiscard]] static bool isLocked(const std::string& file) {
        const platform::FileHandle handle(
            CreateFileA(file.c_str(), GENERIC_READ | GENERIC_WRITE,
                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                        OPEN_EXISTING, 0, nullptr));
        EXPECT_TRUE(handle);
        OVERLAPPED start = {};
        return !LockFileEx(handle.get(), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1,
                           0, &start);
    }
    // Whether somebody has it open: without sharing it could not be opened then.
    [[nodiscard]] static bool isOpen(const std::string& file) {
        return !platform::FileHandle(
            CreateFileA(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    }

    testsupport::TemporaryFolder folder_;
    std::string file_ = folder_.file("lock", "").string();
    cPciTavFilesystem filesystem_;
};

TEST_F(WindowsLock, IsTakenAndReleasedWithTheDocumentedCalls) {
    const Openings openings;
    const Locks locks;
    filesystem_.LockFile(file_);
    EXPECT_TRUE(filesystem_.IsLocked());
    ASSERT_EQ(Openings::attempts.size(), 1U);
    const Openings::Attempt& attempt = Openings::attempts[0];
    EXPECT_EQ(attempt.path, file_);
    EXPECT_EQ(attempt.access, 0xC0000000U);
    EXPECT_EQ(attempt.sharing, 7U);
    EXPECT_EQ(attempt.disposition, DWORD{OPEN_EXISTING});
    EXPECT_EQ(attempt.flags, 0U);
    filesystem_.UnlockFile();
    EXPECT_FALSE(filesystem_.IsLocked());
    EXPECT_THAT(Locks::calls, ElementsAre(kLockCall, kUnlockCall));
}

TEST_F(WindowsLock, HeldByAnotherProcessIsWaitedFor) {
    const std::string marker = folder_.path().string() + "\\marker";
    const Holder holder("lock", file_, marker);
    const Locks locks;
    Locks::before = [&] { holder.tell(); };
    EXPECT_TRUE(isLocked(file_)) << "the holder should have it";
    ASSERT_FALSE(fs::exists(marker));
    Locks::calls.clear();
    filesystem_.LockFile(file_);
    EXPECT_TRUE(fs::exists(marker)) << "the lock was taken while the other process held it";
    EXPECT_TRUE(filesystem_.IsLocked());
    EXPECT_THAT(Locks::calls, ElementsAre(kLockCall));
}

TEST_F(WindowsLock, KeepsOthersOutUntilItIsReleased) {
    EXPECT_FALSE(isLocked(file_));
    filesystem_.LockFile(file_);
    EXPECT_TRUE(isLocked(file_));
    filesystem_.UnlockFile();
    EXPECT_FALSE(isLocked(file_));
}

TEST_F(WindowsLock, OfAFileThatAnotherProcessDoesNotShareTriesThreeTimesAndRaises) {
    Holder holder("hold", file_);
    const Openings openings;
    const Pauses pauses;
    const Locks locks;
    EXPECT_EQ(codeRaisedBy([&] { filesystem_.LockFile(file_); }), ERROR_SHARING_VIOLATION);
    EXPECT_FALSE(filesystem_.IsLocked());
    ASSERT_EQ(Openings::attempts.size(), 3U);
    for (const Openings::Attempt& attempt : Openings::attempts) {
        EXPECT_EQ(attempt.path, file_);
        EXPECT_EQ(attempt.code, DWORD{ERROR_SHARING_VIOLATION});
    }
    EXPECT_THAT(Pauses::lengths, ElementsAre(250, 250));
    EXPECT_THAT(Locks::calls, IsEmpty());
}

TEST_F(WindowsLock, OfAFileThatIsLetGoBetweenTwoTriesIsTaken) {
    for (const std::size_t tries : {2U, 3U}) {
        Holder holder("hold", file_);
        const Openings openings;
        const Pauses pauses;
        Openings::afterwards = [&](std::size_t attempt) {
            if (attempt == tries - 1)
                holder.letGo();
        };
        cPciTavFilesystem filesystem;
        filesystem.LockFile(file_);
        EXPECT_TRUE(filesystem.IsLocked());
        EXPECT_EQ(Openings::attempts.size(), tries);
        EXPECT_EQ(Pauses::lengths, std::vector<DWORD>(tries - 1, 250));
    }
}

TEST_F(WindowsLock, AnyOtherFailureOfOpeningStopsAtOnce) {
    const std::string readOnly = folder_.file("read only", "").string();
    ASSERT_TRUE(SetFileAttributesA(readOnly.c_str(), FILE_ATTRIBUTE_READONLY));
    const std::string folder = folder_.path().string();
    const std::pair<std::string, int> files[] = {{folder + "\\missing", ERROR_FILE_NOT_FOUND},
                                                 {folder + "\\none\\x", ERROR_PATH_NOT_FOUND},
                                                 {folder, ERROR_ACCESS_DENIED},
                                                 {readOnly, ERROR_ACCESS_DENIED}};
    const Openings openings;
    const Pauses pauses;
    for (const auto& [file, code] : files) {
        Openings::attempts.clear();
        EXPECT_EQ(codeRaisedBy([&] { filesystem_.LockFile(file); }), code) << file;
        EXPECT_EQ(Openings::attempts.size(), 1U) << file;
        EXPECT_FALSE(filesystem_.IsLocked());
    }
    EXPECT_THAT(Pauses::lengths, IsEmpty());
    EXPECT_FALSE(fs::exists(folder + "\\missing")) << "the lock creates nothing";
    SetFileAttributesA(readOnly.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(WindowsLock, ThatFailsRaisesTheSystemsCode) {
    const Locks locks;
    Locks::failure = ERROR_NOT_ENOUGH_QUOTA;
    EXPECT_EQ(codeRaisedBy([&] { filesystem_.LockFile(file_); }), ERROR_NOT_ENOUGH_QUOTA);
    EXPECT_FALSE(filesystem_.IsLocked());
    Locks::failure = ERROR_SUCCESS;
    filesystem_.LockFile(file_);
    Locks::failure = ERROR_NOT_LOCKED;
    EXPECT_EQ(codeRaisedBy([&] { filesystem_.UnlockFile(); }), ERROR_NOT_LOCKED);
    EXPECT_TRUE(filesystem_.IsLocked());
    Locks::failure = ERROR_SUCCESS;
    filesystem_.UnlockFile();
    EXPECT_FALSE(filesystem_.IsLocked());
}

TEST_F(WindowsLock, ASecondLockAndASecondUnlockDoNothing) {
    filesystem_.UnlockFile();
    const Openings openings;
    const Locks locks;
    filesystem_.LockFile(file_);
    filesystem_.LockFile(file_);
    filesystem_.LockFile("C:\\no such folder\\file");
    EXPECT_EQ(Openings::attempts.size(), 1U);
    filesystem_.UnlockFile();
    filesystem_.UnlockFile();
    EXPECT_THAT(Locks::calls, ElementsAre(kLockCall, kUnlockCall));
}

TEST_F(WindowsLock, TheFileStaysOpenUntilTheNextLock) {
    const std::string other = folder_.file("other", "").string();
    EXPECT_FALSE(isOpen(file_));
    filesystem_.LockFile(file_);
    filesystem_.UnlockFile();
    EXPECT_TRUE(isOpen(file_));
    EXPECT_EQ(codeRaisedBy([&] { filesystem_.LockFile("C:\\no such folder\\file"); }),
              ERROR_PATH_NOT_FOUND);
    EXPECT_TRUE(isOpen(file_)) << "a failed lock keeps the file of the one before";
    filesystem_.LockFile(other);
    EXPECT_FALSE(isOpen(file_));
    EXPECT_TRUE(isOpen(other));
}

TEST_F(WindowsLock, TheEndOfTheObjectReleasesAndCloses) {
    for (const bool locked : {true, false}) {
        const Locks locks;
        std::unique_ptr<iPciTavFilesystem> filesystem = std::make_unique<cPciTavFilesystem>();
        filesystem->LockFile(file_);
        if (!locked)
            filesystem->UnlockFile();
        Locks::calls.clear();
        filesystem.reset();
        EXPECT_EQ(Locks::calls, std::vector<std::string>(locked ? 1 : 0, kUnlockCall));
        EXPECT_FALSE(isOpen(file_));
        EXPECT_FALSE(isLocked(file_));
    }
}

TEST_F(WindowsLock, TwoObjectsOfOneProcessExcludeEachOther) {
    bool released = false;
    filesystem_.LockFile(file_);
    std::thread second([&] {
        cPciTavFilesystem other;
        other.LockFile(file_);
        EXPECT_TRUE(released);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50)); // so that it would get ahead
    released = true;
    filesystem_.UnlockFile();
    second.join();
}

// The file itself, as far as it must be there for the lock.
TEST_F(WindowsLock, AMissingFileIsMadeWritableAndLeftAloneWhenThere) {
    const std::string fresh = folder_.path().string() + "\\new";
    EXPECT_EQ(filesystem_.EnsureFileExists(fresh), 0);
    EXPECT_EQ(fs::file_size(fresh), 0U);
    EXPECT_FALSE(GetFileAttributesA(fresh.c_str()) & FILE_ATTRIBUTE_READONLY);
    const std::string old = folder_.file("old", "content").string();
    ASSERT_TRUE(SetFileAttributesA(old.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(filesystem_.EnsureFileExists(old), 0);
    EXPECT_TRUE(GetFileAttributesA(old.c_str()) & FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(fs::file_size(old), 7U);
    SetFileAttributesA(old.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_NE(filesystem_.EnsureFileExists(folder_.path().string() + "\\none\\new"), 0);
}

} // namespace
