// Running other programs.
#include "platform/childProgram.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

using platform::ProgramRun;
using platform::runProgram;

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

TEST(ChildProgram, EndedFromOutsideHasNoStatus) {
    EXPECT_EQ(runProgram({"sh", "-c", "kill -9 $$"}, "").exitStatus, -1);
}

} // namespace
