// Real locks between objects and between processes. What the kernel itself reports of a lock and of
// those who wait for it stands in /proc/locks, so that "waits" is seen and not guessed from time.
#include "platform/fileLock.h"

#include "tests/support/temporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using platform::FileLock;
using platform::kNoSystemError;

// The lines of /proc/locks for a file. Those of waiters have an arrow in the second place.
struct KernelView {
    std::vector<std::string> holders;
    std::vector<std::string> waiters;
};

class Lock : public testing::Test {
protected:
    [[nodiscard]] KernelView look(const std::string& path) const {
        struct stat status = {};
        EXPECT_EQ(stat(path.c_str(), &status), 0);
        std::string inode = std::to_string(status.st_ino);
        inode.insert(0, 1, ':').push_back(' ');
        KernelView view;
        std::ifstream locks("/proc/locks");
        for (std::string line; std::getline(locks, line);) {
            if (line.find(inode) == std::string::npos)
                continue;
            (line.find("->") != std::string::npos ? view.waiters : view.holders).push_back(line);
        }
        return view;
    }
    [[nodiscard]] KernelView look() const { return look(path_); }
    [[nodiscard]] bool isLocked(const std::string& path) const {
        return !look(path).holders.empty();
    }

    void awaitWaiters(std::size_t count) const {
        while (look().waiters.size() != count)
            std::this_thread::yield();
    }

    testsupport::TemporaryFolder folder_;
    std::string path_ = folder_.file("names.loc", "").string();
    std::string other_ = folder_.file("other.loc", "").string();
};

TEST_F(Lock, CoversTheWholeFileExclusively) {
    FileLock lock;
    ASSERT_EQ(lock.open(path_.c_str()), kNoSystemError);
    EXPECT_FALSE(isLocked(path_));
    ASSERT_EQ(lock.lock(), kNoSystemError);
    const KernelView view = look();
    ASSERT_EQ(view.holders.size(), 1U);
    EXPECT_NE(view.holders[0].find("OFDLCK"), std::string::npos) << view.holders[0];
    EXPECT_NE(view.holders[0].find("WRITE"), std::string::npos) << view.holders[0];
    EXPECT_TRUE(view.holders[0].ends_with(" 0 EOF")) << view.holders[0];
    ASSERT_EQ(lock.unlock(), kNoSystemError);
    EXPECT_FALSE(isLocked(path_));
}

TEST_F(Lock, FileMustExist) {
    FileLock lock;
    const std::string missing = path_ + ".missing";
    EXPECT_EQ(lock.open(missing.c_str()), static_cast<platform::SystemCode>(ENOENT));
    EXPECT_EQ(access(missing.c_str(), F_OK), -1);
    EXPECT_EQ(lock.open(folder_.path().c_str()), static_cast<platform::SystemCode>(EISDIR));
}

TEST_F(Lock, WithoutAnOpenFileLockingFails) {
    FileLock lock;
    EXPECT_EQ(lock.lock(), static_cast<platform::SystemCode>(EBADF));
    EXPECT_EQ(lock.unlock(), static_cast<platform::SystemCode>(EBADF));
    lock.close();
}

TEST_F(Lock, ObjectsOfOneProcessExcludeEachOther) {
    FileLock first;
    ASSERT_EQ(first.open(path_.c_str()), kNoSystemError);
    ASSERT_EQ(first.lock(), kNoSystemError);
    std::atomic<bool> released = false;
    std::thread second([&] {
        FileLock lock;
        EXPECT_EQ(lock.open(path_.c_str()), kNoSystemError);
        EXPECT_EQ(lock.lock(), kNoSystemError);
        EXPECT_TRUE(released);
    });
    awaitWaiters(1);
    released = true;
    EXPECT_EQ(first.unlock(), kNoSystemError);
    second.join();
    EXPECT_FALSE(isLocked(path_));
}

TEST_F(Lock, ThreadsNeverHoldItTogether) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 100;
    int inside = 0; // guarded by the lock alone
    int together = 0;
    int entered = 0;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&] {
            FileLock lock;
            ASSERT_EQ(lock.open(path_.c_str()), kNoSystemError);
            for (int round = 0; round < kRounds; ++round) {
                ASSERT_EQ(lock.lock(), kNoSystemError);
                together += std::atomic_ref(inside).fetch_add(1) != 0;
                std::this_thread::yield();
                ++entered;
                std::atomic_ref(inside).fetch_sub(1);
                ASSERT_EQ(lock.unlock(), kNoSystemError);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(together, 0);
    EXPECT_EQ(entered, kThreads * kRounds);
}

// The child tells by a byte that it holds the lock, and keeps it until it is told to go.
TEST_F(Lock, ProcessesExcludeEachOther) {
    int held[2];
    int leave[2];
    ASSERT_EQ(pipe(held), 0);
    ASSERT_EQ(pipe(leave), 0);
    FileLock first;
    ASSERT_EQ(first.open(path_.c_str()), kNoSystemError);
    ASSERT_EQ(first.lock(), kNoSystemError);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        FileLock lock;
        char byte = 'h';
        if (lock.open(path_.c_str()) != kNoSystemError || lock.lock() != kNoSystemError)
            _exit(1);
        if (write(held[1], &byte, 1) != 1 || read(leave[0], &byte, 1) != 1)
            _exit(2);
        _exit(0); // the end of the process releases the lock
    }
    awaitWaiters(1);
    ASSERT_EQ(fcntl(held[0], F_SETFL, O_NONBLOCK), 0);
    char byte = 0;
    EXPECT_EQ(read(held[0], &byte, 1), -1) << "the child got the lock beside the parent";
    ASSERT_EQ(fcntl(held[0], F_SETFL, 0), 0);

    ASSERT_EQ(first.unlock(), kNoSystemError);
    ASSERT_EQ(read(held[0], &byte, 1), 1);
    EXPECT_EQ(byte, 'h');

    std::atomic<bool> told = false;
    std::thread again([&] {
        EXPECT_EQ(first.lock(), kNoSystemError);
        EXPECT_TRUE(told);
    });
    awaitWaiters(1);
    told = true;
    EXPECT_EQ(write(leave[1], "x", 1), 1);
    again.join();
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    for (const int descriptor : {held[0], held[1], leave[0], leave[1]})
        close(descriptor);
}

std::atomic<int> signalsSeen = 0;

TEST_F(Lock, SignalDoesNotEndTheWait) {
    struct sigaction action = {};
    action.sa_handler = [](int) { ++signalsSeen; };
    struct sigaction before = {};
    ASSERT_EQ(sigaction(SIGUSR1, &action, &before), 0); // without SA_RESTART
    FileLock first;
    ASSERT_EQ(first.open(path_.c_str()), kNoSystemError);
    ASSERT_EQ(first.lock(), kNoSystemError);
    std::atomic<bool> released = false;
    std::thread second([&] {
        FileLock lock;
        EXPECT_EQ(lock.open(path_.c_str()), kNoSystemError);
        EXPECT_EQ(lock.lock(), kNoSystemError);
        EXPECT_TRUE(released);
    });
    for (int signal = 1; signal <= 3; ++signal) {
        awaitWaiters(1);
        ASSERT_EQ(pthread_kill(second.native_handle(), SIGUSR1), 0);
        while (signalsSeen != signal)
            std::this_thread::yield();
    }
    awaitWaiters(1);
    released = true;
    EXPECT_EQ(first.unlock(), kNoSystemError);
    second.join();
    ASSERT_EQ(sigaction(SIGUSR1, &before, nullptr), 0);
}

TEST_F(Lock, ClosingReleases) {
    FileLock lock;
    ASSERT_EQ(lock.open(path_.c_str()), kNoSystemError);
    ASSERT_EQ(lock.lock(), kNoSystemError);
    lock.close();
    EXPECT_FALSE(isLocked(path_));
}

TEST_F(Lock, DestructionReleases) {
    {
        FileLock lock;
        ASSERT_EQ(lock.open(path_.c_str()), kNoSystemError);
        ASSERT_EQ(lock.lock(), kNoSystemError);
        EXPECT_TRUE(isLocked(path_));
    }
    EXPECT_FALSE(isLocked(path_));
}

TEST_F(Lock, ClosingAnotherDescriptorOfTheFileKeepsIt) {
    FileLock lock;
    ASSERT_EQ(lock.open(path_.c_str()), kNoSystemError);
    ASSERT_EQ(lock.lock(), kNoSystemError);
    { const std::ifstream other(path_); }
    EXPECT_TRUE(isLocked(path_));
}

TEST_F(Lock, OpeningAnotherFileGivesTheFirstUp) {
    FileLock lock;
    ASSERT_EQ(lock.open(path_.c_str()), kNoSystemError);
    ASSERT_EQ(lock.lock(), kNoSystemError);
    ASSERT_EQ(lock.open(other_.c_str()), kNoSystemError);
    EXPECT_FALSE(isLocked(path_));
    EXPECT_FALSE(isLocked(other_));
    ASSERT_EQ(lock.lock(), kNoSystemError);
    EXPECT_TRUE(isLocked(other_));
}

TEST_F(Lock, FailedOpeningKeepsTheFirst) {
    FileLock lock;
    ASSERT_EQ(lock.open(path_.c_str()), kNoSystemError);
    ASSERT_EQ(lock.lock(), kNoSystemError);
    ASSERT_EQ(lock.open((path_ + ".missing").c_str()), static_cast<platform::SystemCode>(ENOENT));
    EXPECT_TRUE(isLocked(path_));
    EXPECT_EQ(lock.unlock(), kNoSystemError);
    EXPECT_FALSE(isLocked(path_));
}

// A program started meanwhile must not keep the lock when this process ends.
TEST_F(Lock, IsNotPassedOnToOtherPrograms) {
    FileLock lock;
    ASSERT_EQ(lock.open(path_.c_str()), kNoSystemError);
    struct stat sought = {};
    ASSERT_EQ(stat(path_.c_str(), &sought), 0);
    int found = 0;
    for (int descriptor = 0; descriptor < 1024; ++descriptor) {
        struct stat status = {};
        if (fstat(descriptor, &status) != 0 || status.st_ino != sought.st_ino ||
            status.st_dev != sought.st_dev)
            continue;
        ++found;
        EXPECT_EQ(fcntl(descriptor, F_GETFD), FD_CLOEXEC);
    }
    EXPECT_EQ(found, 1);
}

} // namespace
