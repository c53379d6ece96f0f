// Processes that are ended early: what they leave, and how they end.
#include "platform/earlyEnd.h"

#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <string>
#include <thread>

namespace {

namespace fs = std::filesystem;
using platform::EarlyEndHeldBack;
using platform::RemovedAtEarlyEnd;
using testing::ExitedWithCode;
using testing::KilledBySignal;
using testsupport::TemporaryFolder;

constexpr auto kFile = RemovedAtEarlyEnd::Kind::file;
constexpr auto kFolder = RemovedAtEarlyEnd::Kind::folder;

// Each test's process is a copy of this one.
class EarlyEnd : public testing::Test {
protected:
    EarlyEnd() {
        // Tests that run in the background are started to pass some of them over.
        for (const int end : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGPIPE})
            before_.emplace_back(end, std::signal(end, SIG_DFL));
        for (int i = 0; i < 300; ++i)
            static_cast<void>(folder_.file("scratch/" + std::to_string(i), "text"));
        static_cast<void>(folder_.file("kept", "text"));
    }

    ~EarlyEnd() override {
        for (const auto& [end, handler] : before_)
            std::signal(end, handler);
    }

    [[nodiscard]] fs::path in(const char* name) const { return folder_.path() / name; }

    TemporaryFolder folder_;
    std::vector<std::pair<int, void (*)(int)>> before_;
};

using EarlyEndDeathTest = EarlyEnd;

TEST_F(EarlyEndDeathTest, RemovesFilesAndFoldersAndEndsBySignal) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE}) {
        static_cast<void>(folder_.file("scratch/file", "text"));
        static_cast<void>(folder_.file("passing", "text"));
        EXPECT_EXIT(
            {
                platform::meetEarlyEnds();
                const RemovedAtEarlyEnd file(kFile, in("passing"));
                const RemovedAtEarlyEnd scratch(kFolder, in("scratch"));
                const RemovedAtEarlyEnd missing(kFolder, in("missing"));
                raise(signal);
            },
            KilledBySignal(signal), "");
        EXPECT_FALSE(fs::exists(in("passing")));
        EXPECT_FALSE(fs::exists(in("scratch")));
        EXPECT_TRUE(fs::exists(in("kept")));
    }
}

TEST_F(EarlyEndDeathTest, LeavesWhatIsNamedNoLonger) {
    EXPECT_EXIT(
        {
            platform::meetEarlyEnds();
            { const RemovedAtEarlyEnd file(kFile, in("kept")); }
            const RemovedAtEarlyEnd scratch(kFolder, in("scratch"));
            raise(SIGTERM);
        },
        KilledBySignal(SIGTERM), "");
    EXPECT_TRUE(fs::exists(in("kept")));
    EXPECT_FALSE(fs::exists(in("scratch")));
}

TEST_F(EarlyEndDeathTest, LeavesWhatALinkInTheFoldersPlaceLeadsTo) {
    fs::create_directory_symlink("scratch", in("link"));
    EXPECT_EXIT(
        {
            platform::meetEarlyEnds();
            const RemovedAtEarlyEnd link(kFolder, in("link"));
            raise(SIGTERM);
        },
        KilledBySignal(SIGTERM), "");
    EXPECT_TRUE(fs::exists(in("scratch/1")));
}

TEST_F(EarlyEndDeathTest, WhatWasIgnoredAtTheStartStaysIgnored) {
    EXPECT_EXIT(
        {
            std::signal(SIGHUP, SIG_IGN);
            platform::meetEarlyEnds();
            const RemovedAtEarlyEnd file(kFile, in("kept"));
            raise(SIGHUP);
            _exit(7);
        },
        ExitedWithCode(7), "");
    EXPECT_TRUE(fs::exists(in("kept")));
}

TEST_F(EarlyEndDeathTest, WaitsForTheLastWhoHoldsItBack) {
    EXPECT_EXIT(
        {
            platform::meetEarlyEnds();
            {
                const EarlyEndHeldBack outer;
                {
                    const EarlyEndHeldBack inner;
                    raise(SIGHUP);
                    raise(SIGHUP); // a terminal that closes may say so twice
                }
                std::ofstream(in("saved")) << "whole";
            }
            _exit(7);
        },
        KilledBySignal(SIGHUP), "");
    EXPECT_EQ(fs::file_size(in("saved")), 5U);
}

TEST_F(EarlyEndDeathTest, TheSecondDoesNotWait) {
    EXPECT_EXIT(
        {
            platform::meetEarlyEnds();
            const RemovedAtEarlyEnd file(kFile, in("kept"));
            const EarlyEndHeldBack saving;
            raise(SIGINT);
            raise(SIGTERM);
            _exit(7);
        },
        KilledBySignal(SIGTERM), "");
    EXPECT_FALSE(fs::exists(in("kept")));
}

TEST_F(EarlyEndDeathTest, IsMetInTheFirstThreadWhereverItComes) {
    EXPECT_EXIT(
        {
            platform::meetEarlyEnds();
            const RemovedAtEarlyEnd file(kFile, in("kept"));
            EarlyEndHeldBack saving;
            std::thread([] { raise(SIGINT); }).join();
            std::ofstream(in("saved")) << "whole";
            saving.~EarlyEndHeldBack();
            _exit(7);
        },
        KilledBySignal(SIGINT), "");
    EXPECT_TRUE(fs::exists(in("saved")));
    EXPECT_FALSE(fs::exists(in("kept")));
}

TEST_F(EarlyEndDeathTest, TakesNoMoreThanThereIsRoomFor) {
    std::vector<std::unique_ptr<RemovedAtEarlyEnd>> many;
    for (std::size_t i = 0; i < RemovedAtEarlyEnd::kMost + 3; ++i)
        many.push_back(std::make_unique<RemovedAtEarlyEnd>(kFile, in("nothing")));
    const RemovedAtEarlyEnd tooLong(kFile, std::string(100'000, 'x'));
    many.clear();
    EXPECT_EXIT(
        {
            platform::meetEarlyEnds();
            const RemovedAtEarlyEnd file(kFile, in("kept"));
            raise(SIGINT);
        },
        KilledBySignal(SIGINT), "");
    EXPECT_FALSE(fs::exists(in("kept")));
}

} // namespace
