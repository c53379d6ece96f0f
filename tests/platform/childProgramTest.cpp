// Running other programs.
#include "platform/childProgram.h"

#include "platform/earlyEnd.h"
#include "tests/support/environmentValue.h"
#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/types.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>

namespace {

namespace fs = std::filesystem;
using platform::ProgramRun;
using platform::runProgram;
using testsupport::EnvironmentValue;
using testsupport::TemporaryFolder;

TEST(ChildProgram, GetsItsInputAndGivesItsOutput) {
    const ProgramRun run = runProgram({"tr", "a-z", "A-Z"}, "hello\n");
    EXPECT_EQ(run.failure, 0U);
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_EQ(run.output, "HELLO\n");
}

// More than any pipe holds, in both directions at once.
TEST(ChildProgram, TakesAndGivesMuch) {
    const std::string text(5'000'000, 'x');
    EXPECT_EQ(runProgram({"cat"}, text).output, text);
}

TEST(ChildProgram, MayEndWithoutReadingItsInput) {
    const ProgramRun run = runProgram({"sh", "-c", "exit 5"}, std::string(5'000'000, 'x'));
    EXPECT_EQ(run.failure, 0U);
    EXPECT_EQ(run.exitStatus, 5);
}

TEST(ChildProgram, WordsArriveAsTheyAre) {
    EXPECT_EQ(runProgram({"printf", "[%s]", "a b", "\"", "\\", "", "\xC3\xB6"}, "").output,
              "[a b][\"][\\][][\xC3\xB6]");
}

TEST(ChildProgram, MissingProgramIsAFailure) {
    EXPECT_EQ(runProgram({"no-such-program-here"}, "").failure, static_cast<unsigned>(ENOENT));
}

// A program of this name in a folder, which prints where it is.
void plant(const fs::path& folder, const char* word) {
    fs::create_directories(folder);
    std::ofstream(folder / "planted") << "#!/bin/sh\necho " << word << "\n";
    fs::permissions(folder / "planted", fs::perms::owner_all);
}

TEST(ChildProgram, IsNeverTakenFromTheCurrentFolderNorFromThere) {
    const TemporaryFolder folder;
    plant(folder.path(), "here");
    plant(folder.path() / "bin", "below");
    plant(folder.path() / "named", "named");
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    const std::string named = (folder.path() / "named").string();
    for (const std::string folders : {"", ":", ".", "bin", "./bin", ":/nonexistent", ".:bin:"}) {
        const EnvironmentValue path("PATH", folders);
        EXPECT_EQ(runProgram({"planted"}, "").failure, static_cast<unsigned>(ENOENT)) << folders;
        EXPECT_EQ(runProgram({"./planted"}, "").failure, static_cast<unsigned>(ENOENT));
        const EnvironmentValue longer("PATH", folders + ":" + named);
        EXPECT_EQ(runProgram({"planted"}, "").output, "named\n") << folders;
    }
    const EnvironmentValue none("PATH", std::nullopt);
    EXPECT_EQ(runProgram({"planted"}, "").failure, static_cast<unsigned>(ENOENT));
    EXPECT_EQ(runProgram({"cat"}, "x").output, "x");
    EXPECT_EQ(runProgram({named + "/planted"}, "").output, "named\n");
    fs::current_path(before);
}

TEST(ChildProgram, WhatCannotBeRunIsPassedOverAndNamed) {
    const TemporaryFolder folder;
    plant(folder.path() / "a", "first");
    plant(folder.path() / "b", "second");
    fs::permissions(folder.path() / "a/planted", fs::perms::owner_read);
    fs::create_directories(folder.path() / "c/planted");
    const std::string start = folder.path().string();
    const EnvironmentValue path("PATH", start + "/a:" + start + "/c");
    EXPECT_EQ(runProgram({"planted"}, "").failure, static_cast<unsigned>(EACCES));
    const EnvironmentValue both("PATH", start + "/a:" + start + "/c:" + start + "/b");
    EXPECT_EQ(runProgram({"planted"}, "").output, "second\n");
}

// Where a process may have no more of them, too.
TEST(ChildProgram, TakesNoThread) {
    EXPECT_EQ(runProgram({"sh", "-c", "cat >/dev/null; ls /proc/$PPID/task | wc -l"},
                         std::string(5'000'000, 'x'))
                  .output,
              "1\n");
}

TEST(ChildProgram, ThatEndedLeavesNoSignalBehind) {
    EXPECT_EQ(runProgram({"true"}, std::string(5'000'000, 'x')).exitStatus, 0);
    sigset_t set;
    sigpending(&set);
    EXPECT_EQ(sigismember(&set, SIGPIPE), 0);
    pthread_sigmask(SIG_BLOCK, nullptr, &set);
    EXPECT_EQ(sigismember(&set, SIGPIPE), 0);
}

// The program writes its number and waits, with neither end of its pipes in use.
TEST(ChildProgramDeathTest, EndsWithThisOne) {
    const TemporaryFolder folder;
    const std::string file = (folder.path() / "number").string();
    EXPECT_EXIT(
        {
            platform::meetEarlyEnds();
            runProgram(
                {"sh", "-c", "echo $$ >" + file + "; kill $PPID; exec >/dev/null sleep 1000"}, "");
        },
        testing::KilledBySignal(SIGTERM), "");
    pid_t child = 0;
    std::ifstream(file) >> child;
    ASSERT_GT(child, 0);
    const auto isOver = [&] {
        std::string state;
        std::ifstream status("/proc/" + std::to_string(child) + "/stat");
        for (std::string word; state.empty() && status >> word;) {
            if (word.ends_with(')'))
                status >> state;
        }
        return state.empty() || state == "Z";
    };
    for (int tried = 0; tried < 1000 && !isOver(); ++tried)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_TRUE(isOver());
}

TEST(ChildProgram, EndedFromOutsideHasNoStatus) {
    EXPECT_EQ(runProgram({"sh", "-c", "kill -9 $$"}, "").exitStatus, -1);
}

} // namespace
