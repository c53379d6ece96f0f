// Waiting: for time, for a request to end, for a reader that goes. What the system tells of devices
// is tried with programs, which find another library in the place of the system's.
#include "platform/deviceEvents.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

namespace {

using platform::DeviceEvents;
using platform::StopRequest;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::ExitedWithCode;
using testing::KilledBySignal;
using Listening = DeviceEvents::Listening;
using Woken = DeviceEvents::Woken;

TEST(DeviceEvents, WaitsAsLongAsItIsToldTo) {
    const StopRequest stop;
    DeviceEvents events(Listening::no);
    EXPECT_FALSE(events.isListening());
    const auto start = steady_clock::now();
    EXPECT_EQ(events.wait(milliseconds(30), stop), Woken::time);
    EXPECT_GE(steady_clock::now() - start, milliseconds(30));
    EXPECT_EQ(events.wait(milliseconds(0), stop), Woken::time);
}

// Each test's process is a copy of this one.
class StopRequestDeathTest : public testing::Test {
protected:
    static void begin() {
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE})
            std::signal(number, SIG_DFL);
        platform::meetEarlyEnds();
    }
};

TEST_F(StopRequestDeathTest, EndsAWaitThatHasNoOtherEnd) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_EXIT(
            {
                begin();
                const StopRequest stop;
                DeviceEvents events(Listening::no);
                std::thread asker([=] {
                    std::this_thread::sleep_for(milliseconds(20));
                    kill(getpid(), number);
                });
                const bool isStop = events.wait(std::nullopt, stop) == Woken::stop &&
                                    stop.isMade() && events.wait(std::nullopt, stop) == Woken::stop;
                asker.join();
                _exit(isStop ? 7 : 1);
            },
            ExitedWithCode(7), "");
    }
}

TEST_F(StopRequestDeathTest, IsNotMadeByOtherSignals) {
    for (const int number : {SIGQUIT, SIGPIPE}) {
        EXPECT_EXIT(
            {
                begin();
                const StopRequest stop;
                raise(number);
            },
            KilledBySignal(number), "");
    }
}

TEST_F(StopRequestDeathTest, WhoAsksASecondTimeIsNotMadeToWait) {
    EXPECT_EXIT(
        {
            begin();
            const StopRequest stop;
            raise(SIGHUP);
            raise(SIGHUP); // a terminal that closes may say so twice
            raise(SIGTERM);
            _exit(1);
        },
        KilledBySignal(SIGTERM), "");
}

TEST_F(StopRequestDeathTest, IsLeftToTheProgramNoLongerThanItIsAwaited) {
    EXPECT_EXIT(
        {
            begin();
            { const StopRequest stop; }
            raise(SIGTERM);
        },
        KilledBySignal(SIGTERM), "");
    EXPECT_EXIT(
        {
            begin();
            {
                const StopRequest stop;
                raise(SIGINT);
            }
            const StopRequest again;
            _exit(again.isMade() ? 1 : 7);
        },
        ExitedWithCode(7), "");
}

TEST_F(StopRequestDeathTest, AReaderThatGoesEndsAWait) {
    EXPECT_EXIT(
        {
            begin();
            int ends[2];
            if (pipe(ends) != 0 || dup2(ends[1], STDOUT_FILENO) < 0)
                _exit(1);
            const StopRequest stop;
            DeviceEvents events(Listening::no);
            const bool isRead = events.wait(milliseconds(10), stop) == Woken::time;
            close(ends[0]);
            _exit(isRead && events.wait(std::nullopt, stop) == Woken::unread ? 7 : 1);
        },
        ExitedWithCode(7), "");
}

} // namespace
