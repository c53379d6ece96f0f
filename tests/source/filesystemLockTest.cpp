// The lock by which processes take turns: who waits for whom, which file stays open, and what is
// raised.
#include "source/cPciTavFilesystem.h"
#include "source/patientOpening.h"
#include "tests/source/support/systemCodes.h"
#include "tests/support/temporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <boost/interprocess/exceptions.hpp>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace nZoTavManagerPciPlugin_15_0;
using boost::interprocess::interprocess_exception;
using testing::ElementsAre;
using testing::IsEmpty;

// This process's descriptors that stand for a file.
std::vector<int> descriptorsOf(const std::string& path) {
    std::vector<int> result;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        if (fs::read_symlink(entry, ignored) == path)
            result.push_back(std::stoi(entry.path().filename().string()));
    }
    return result;
}

// The system's code of the interprocess exception that a call raises; 0 when it raises none.
template <class Call>
int codeRaisedBy(Call call) {
    try {
        call();
    } catch (const interprocess_exception& exception) {
        return exception.get_native_error();
    }
    return 0;
}

class FilesystemLock : public testing::Test {
protected:
    std::string make(const std::string& name) const {
        const std::string path = folder_.file(name, "").string();
        return fs::canonical(path).string();
    }

    // Whether another process finds the file locked.
    static bool isLockedForOthers(const std::string& path) {
        const pid_t child = fork();
        if (child == 0) {
            const int descriptor = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
            struct flock range = {};
            range.l_type = F_WRLCK;
            range.l_whence = SEEK_SET;
            _exit(fcntl(descriptor, F_OFD_SETLK, &range) == 0 ? 0 : 1);
        }
        return exitStatusOf(child) == 1;
    }
    static int exitStatusOf(pid_t child) {
        int status = 0;
        if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status))
            throw std::runtime_error("the other process did not end as it should");
        return WEXITSTATUS(status);
    }

    testsupport::TemporaryFolder folder_;
    std::string file_ = make("lock");
};

TEST_F(FilesystemLock, StartsUnlocked) {
    const cPciTavFilesystem filesystem;
    EXPECT_FALSE(filesystem.IsLocked());
    EXPECT_THAT(descriptorsOf(file_), IsEmpty());
}

TEST_F(FilesystemLock, KeepsOtherProcessesOutUntilItIsReleased) {
    cPciTavFilesystem filesystem;
    EXPECT_FALSE(isLockedForOthers(file_));
    filesystem.LockFile(file_);
    EXPECT_TRUE(filesystem.IsLocked());
    EXPECT_TRUE(isLockedForOthers(file_));
    filesystem.UnlockFile();
    EXPECT_FALSE(filesystem.IsLocked());
    EXPECT_FALSE(isLockedForOthers(file_));
}

TEST_F(FilesystemLock, AnotherProcessWaitsForItsTurn) {
    const std::string marker = folder_.path().string() + "/released";
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    cPciTavFilesystem filesystem;
    filesystem.LockFile(file_);
    const pid_t child = fork();
    if (child == 0) {
        cPciTavFilesystem other;
        if (::write(pipe[1], "w", 1) != 1)
            _exit(2);
        other.LockFile(file_);
        _exit(fs::exists(marker) ? 0 : 1);
    }
    char asking = 0;
    EXPECT_EQ(::read(pipe[0], &asking, 1), 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(50)); // so that it would get ahead
    EXPECT_TRUE(std::ofstream(marker).good());
    filesystem.UnlockFile();
    EXPECT_EQ(exitStatusOf(child), 0);
    close(pipe[0]);
    close(pipe[1]);
}

TEST_F(FilesystemLock, TwoObjectsOfOneProcessExcludeEachOther) {
    bool released = false;
    cPciTavFilesystem filesystem;
    filesystem.LockFile(file_);
    std::thread second([&] {
        cPciTavFilesystem other;
        other.LockFile(file_);
        EXPECT_TRUE(released);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50)); // so that it would get ahead
    released = true;
    filesystem.UnlockFile();
    second.join();
}

TEST_F(FilesystemLock, ASecondLockDoesNothing) {
    cPciTavFilesystem filesystem;
    filesystem.LockFile(file_);
    const std::vector<int> descriptors = descriptorsOf(file_);
    EXPECT_EQ(descriptors.size(), 1U);
    filesystem.LockFile(file_);
    const std::string otherFile = make("other");
    filesystem.LockFile(otherFile);
    filesystem.LockFile("/no such/file");
    EXPECT_TRUE(filesystem.IsLocked());
    EXPECT_EQ(descriptorsOf(file_), descriptors);
    EXPECT_THAT(descriptorsOf(otherFile), IsEmpty());
    EXPECT_FALSE(isLockedForOthers(otherFile));
}

TEST_F(FilesystemLock, LocksAreNotCounted) {
    cPciTavFilesystem filesystem;
    filesystem.LockFile(file_);
    filesystem.LockFile(file_);
    filesystem.UnlockFile();
    EXPECT_FALSE(filesystem.IsLocked());
    EXPECT_FALSE(isLockedForOthers(file_));
}

TEST_F(FilesystemLock, UnlockingWhatIsNotLockedDoesNothing) {
    cPciTavFilesystem filesystem;
    filesystem.UnlockFile();
    EXPECT_FALSE(filesystem.IsLocked());
    filesystem.LockFile(file_);
    filesystem.UnlockFile();
    filesystem.UnlockFile();
    EXPECT_FALSE(filesystem.IsLocked());
}

TEST_F(FilesystemLock, TheFileStaysOpenUntilTheNextLock) {
    cPciTavFilesystem filesystem;
    filesystem.LockFile(file_);
    filesystem.UnlockFile();
    EXPECT_EQ(descriptorsOf(file_).size(), 1U);
    filesystem.LockFile(file_);
    EXPECT_EQ(descriptorsOf(file_).size(), 1U);
    EXPECT_TRUE(isLockedForOthers(file_));
    filesystem.UnlockFile();
    const std::string otherFile = make("other");
    filesystem.LockFile(otherFile);
    EXPECT_THAT(descriptorsOf(file_), IsEmpty());
    EXPECT_EQ(descriptorsOf(otherFile).size(), 1U);
    EXPECT_TRUE(isLockedForOthers(otherFile));
}

TEST_F(FilesystemLock, TheEndOfTheObjectReleasesAndCloses) {
    for (const bool locked : {true, false}) {
        std::unique_ptr<iPciTavFilesystem> filesystem = std::make_unique<cPciTavFilesystem>();
        filesystem->LockFile(file_);
        if (!locked)
            filesystem->UnlockFile();
        // A copy of the descriptor keeps a lock alive that was not released before closing.
        const int copy = dup(descriptorsOf(file_).at(0));
        ASSERT_GE(copy, 0);
        filesystem.reset();
        EXPECT_THAT(descriptorsOf(file_), ElementsAre(copy));
        EXPECT_FALSE(isLockedForOthers(file_));
        close(copy);
    }
}

TEST_F(FilesystemLock, AFileThatCannotBeOpenedRaisesTheSystemsCode) {
    cPciTavFilesystem filesystem;
    const std::string missing = folder_.path().string() + "/missing";
    EXPECT_EQ(codeRaisedBy([&] { filesystem.LockFile(missing); }), kNoEntry);
    EXPECT_FALSE(filesystem.IsLocked());
    EXPECT_FALSE(fs::exists(missing)); // the lock creates nothing
    EXPECT_EQ(codeRaisedBy([&] { filesystem.LockFile(folder_.path().string()); }), kIsFolder);
    EXPECT_FALSE(filesystem.IsLocked());
    filesystem.LockFile(file_);
    EXPECT_TRUE(filesystem.IsLocked());
}

TEST_F(FilesystemLock, AFailedLockKeepsTheFileOfTheOneBefore) {
    cPciTavFilesystem filesystem;
    filesystem.LockFile(file_);
    filesystem.UnlockFile();
    EXPECT_EQ(codeRaisedBy([&] { filesystem.LockFile("/no such/file"); }), kNoEntry);
    EXPECT_EQ(descriptorsOf(file_).size(), 1U);
}

TEST_F(FilesystemLock, AnUnlockThatFailsRaisesAndStaysLocked) {
    cPciTavFilesystem filesystem;
    filesystem.LockFile(file_);
    const int descriptor = descriptorsOf(file_).at(0);
    close(descriptor); // behind its owner's back
    EXPECT_EQ(codeRaisedBy([&] { filesystem.UnlockFile(); }), kBadDescriptor);
    EXPECT_TRUE(filesystem.IsLocked());
    const int again = ::open(file_.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(again, 0);
    if (again != descriptor) {
        ASSERT_EQ(dup2(again, descriptor), descriptor);
        close(again);
    }
    filesystem.UnlockFile();
    EXPECT_FALSE(filesystem.IsLocked());
}

TEST_F(FilesystemLock, AnUnlockThatFailsAtTheEndOfTheObjectEndsTheProcess) {
    EXPECT_DEATH(
        {
            cPciTavFilesystem filesystem;
            filesystem.LockFile(file_);
            close(descriptorsOf(file_).at(0));
        },
        "");
}

// How often a file is opened that answers these codes, one an attempt, of which 32 means that
// another process holds it.
struct Opening {
    static constexpr platform::SystemCode kHeldByAnother = 32;

    explicit Opening(std::vector<platform::SystemCode> codes) {
        result = openPatiently([&] { return codes.at(attempts++); },
                               [](platform::SystemCode code) { return code == kHeldByAnother; },
                               [&](std::chrono::milliseconds pause) { pauses.push_back(pause); });
    }

    std::size_t attempts = 0;
    std::vector<std::chrono::milliseconds> pauses;
    platform::SystemCode result = 0;
};

TEST(PatientOpening, TriesThreeTimesQuarterASecondApart) {
    const Opening opening({32, 32, 32});
    EXPECT_EQ(opening.attempts, 3U);
    EXPECT_THAT(opening.pauses,
                ElementsAre(std::chrono::milliseconds(250), std::chrono::milliseconds(250)));
    EXPECT_EQ(opening.result, 32U);
}

TEST(PatientOpening, StopsWhenTheFileCanBeOpened) {
    const Opening first({0});
    EXPECT_EQ(first.attempts, 1U);
    EXPECT_THAT(first.pauses, IsEmpty());
    const Opening second({32, 0});
    EXPECT_EQ(second.attempts, 2U);
    EXPECT_EQ(second.pauses.size(), 1U);
    EXPECT_EQ(second.result, 0U);
    const Opening third({32, 32, 0});
    EXPECT_EQ(third.attempts, 3U);
    EXPECT_EQ(third.result, 0U);
}

TEST(PatientOpening, AnyOtherFailureStopsAtOnce) {
    const Opening first({2});
    EXPECT_EQ(first.attempts, 1U);
    EXPECT_EQ(first.result, 2U);
    const Opening second({32, 5});
    EXPECT_EQ(second.attempts, 2U);
    EXPECT_EQ(second.result, 5U);
}

} // namespace
