// What the other tests of this room stand on: a call that is to fail fails, and as it is told to.
#include "tests/faults/tracedRun.h"

#include "tests/faults/systemCalls.h"
#include "tests/support/temporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <functional>
#include <string>

namespace {

using testfaults::SystemCall;
using testfaults::Verdict;
using testfaults::WatchedPart;

struct Told {
    int descriptor = 0;
    int error = 0;
    long written = 0;
    int closed = 0;
    int closeError = 0;
    bool isStillOpen = false;
};

// Writes ten bytes into a file and closes it, with this verdict on the calls of one number.
Told writeTen(long number, const Verdict& verdict, const std::string& file) {
    const testfaults::SharedValue<Told> told;
    const auto end = testfaults::runTraced(
        [&] {
            const WatchedPart watched;
            told->descriptor = open(file.c_str(), O_WRONLY | O_CREAT, 0600);
            told->error = errno;
            told->written = write(told->descriptor, "0123456789", 10);
            told->error = told->written < 0 ? errno : told->error;
            told->closed = close(told->descriptor);
            told->closeError = errno;
            told->isStillOpen = fcntl(told->descriptor, F_GETFD) >= 0;
            return 7;
        },
        [&](const SystemCall& call) { return call.number == number ? verdict : Verdict{}; });
    EXPECT_EQ(end.exitStatus, 7);
    return *told;
}

class TracedRun : public testing::Test {
protected:
    // Creates the file while the calls are watched. The path is taken before: under checking, the
    // first look at a member makes system calls of its own.
    [[nodiscard]] std::function<int()> creating() const {
        return [path = file_] {
            const WatchedPart watched;
            close(open(path.c_str(), O_WRONLY | O_CREAT, 0600));
            return 0;
        };
    }

    testsupport::TemporaryFolder folder_;
    std::string file_ = (folder_.path() / "file").string();
};

TEST_F(TracedRun, LetsEveryCallBe) {
    const Told told = writeTen(-1, {}, file_);
    EXPECT_EQ(told.written, 10);
    EXPECT_EQ(told.closed, 0);
    EXPECT_EQ(std::filesystem::file_size(file_), 10U);
}

TEST_F(TracedRun, FailsACallWithoutMakingIt) {
    const Told told = writeTen(SYS_openat, {Verdict::Kind::fail, EMFILE, 0}, file_);
    EXPECT_EQ(told.descriptor, -1);
    EXPECT_FALSE(std::filesystem::exists(file_));
    EXPECT_EQ(writeTen(SYS_write, {Verdict::Kind::fail, ENOSPC, 0}, file_).error, ENOSPC);
    EXPECT_EQ(std::filesystem::file_size(file_), 0U);
}

TEST_F(TracedRun, ClosesAndGivesTheErrorAllTheSame) {
    const Told told = writeTen(SYS_close, {Verdict::Kind::failAfter, EIO, 0}, file_);
    EXPECT_EQ(told.closed, -1);
    EXPECT_EQ(told.closeError, EIO);
    EXPECT_FALSE(told.isStillOpen);
}

TEST_F(TracedRun, ShortensAWrite) {
    EXPECT_EQ(writeTen(SYS_write, {Verdict::Kind::shorten, 0, 1}, file_).written, 1);
    EXPECT_EQ(std::filesystem::file_size(file_), 1U);
}

TEST_F(TracedRun, KillsBeforeTheCallIsMade) {
    const auto end = testfaults::runTraced(creating(), [](const SystemCall&) {
        return Verdict{Verdict::Kind::kill, 0, 0};
    });
    EXPECT_EQ(end.signal, SIGKILL);
    EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(TracedRun, SendsASignalAtACall) {
    const auto end = testfaults::runTraced(creating(), [](const SystemCall& call) {
        return call.number == SYS_close ? Verdict{Verdict::Kind::signal, SIGTERM, 0} : Verdict{};
    });
    EXPECT_EQ(end.signal, SIGTERM);
    EXPECT_TRUE(std::filesystem::exists(file_));
}

TEST_F(TracedRun, WatchesThePartOnly) {
    std::vector<std::string> calls;
    testfaults::runTraced(
        [&] {
            close(open("/dev/null", O_RDONLY));
            {
                const WatchedPart watched;
                close(open("/dev/null", O_RDONLY));
            }
            close(open("/dev/null", O_RDONLY));
            return 0;
        },
        [&](const SystemCall& call) {
            calls.push_back(testfaults::nameOf(call));
            return Verdict{};
        });
    EXPECT_EQ(calls, (std::vector<std::string>{"openat", "close"}));
}

} // namespace
