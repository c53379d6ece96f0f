// Each system call of a command that writes a file of names fails once, in each way that it can:
// the file is the old one or the new one, whole, and the exit status tells the truth.
#include "tests/faults/namesCommand.h"
#include "tests/faults/systemCalls.h"
#include "tests/support/effort.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <set>

namespace {

using testfaults::CallFault;
using testfaults::NamesCommand;
using testfaults::SystemCall;

// tavctl's exit statuses.
constexpr int kDone = 0;
constexpr int kFailed = 3;

class TavctlFaults : public testing::TestWithParam<NamesCommand::Word> {
protected:
    NamesCommand command_{GetParam()};
};

TEST_P(TavctlFaults, EachOnceLeavesTheOldFileOrTheNewOneWhole) {
    command_.reset();
    const std::string before = command_.written();
    std::vector<SystemCall> calls;
    ASSERT_EQ(command_.run(testfaults::listCalls(calls)).exitStatus, kDone);
    const std::string after = command_.written();
    ASSERT_NE(after, before);
    const auto isRename = [](const SystemCall& call) { return call.number == SYS_rename; };
    // The last one puts the file in its place.
    const auto rename = std::find_if(calls.rbegin(), calls.rend(), isRename);
    ASSERT_NE(rename, calls.rend());
    const auto renamed = static_cast<std::size_t>(calls.rend() - rename) - 1;

    std::set<std::string> tried;
    std::size_t points = 0;
    std::size_t faults = 0;
    std::size_t told = 0;
    for (std::size_t number = 0; number < calls.size(); ++number) {
        const std::string call = testfaults::nameOf(calls[number]);
        const auto ways = testfaults::faultsOf(calls[number]);
        points += ways.empty() ? 0 : 1;
        for (const CallFault& fault : ways) {
            SCOPED_TRACE("call " + std::to_string(number) + ", " + call + " " + fault.name);
            command_.reset();
            const auto end = command_.run(testfaults::onlyCall(number, fault.verdict));
            const std::string now = command_.written();
            EXPECT_EQ(end.signal, 0);
            EXPECT_TRUE(end.exitStatus == kDone || end.exitStatus == kFailed) << end.exitStatus;
            EXPECT_TRUE(now == before || now == after) << now;
            // Whoever is told that it is done has the new file; what fails behind the renaming
            // comes too late to keep the old one.
            EXPECT_TRUE(end.exitStatus != kDone || now == after);
            EXPECT_TRUE(end.exitStatus == kDone || now == before || number > renamed);
            // A signal, or a call that does only a part, is nobody's failure.
            EXPECT_TRUE(end.exitStatus == kDone || !fault.isHarmless());
            EXPECT_FALSE(command_.hasLeftovers());
            tried.insert(call + " " + fault.name);
            told += end.exitStatus == kDone ? 0 : 1;
            ++faults;
        }
    }
    for (const char* each :
         {"openat EACCES",    "openat EMFILE",   "openat EINTR",     "openat EIO",
          "openat ENOSPC",    "read EIO",        "read EINTR",       "read short",
          "write ENOSPC",     "write EIO",       "write EINTR",      "write short",
          "close EIO",        "close EINTR",     "close ENOSPC",     "fcntl EIO",
          "fcntl ENOLCK",     "fcntl EINTR",     "fsync EIO",        "fsync ENOSPC",
          "fsync EINTR",      "rename EACCES",   "rename EIO",       "rename ENOSPC",
          "fchmod EPERM",     "fchmod EIO",      "fchmod EINTR",     "fallocate ENOSPC",
          "fallocate EDQUOT", "fallocate EFBIG", "newfstatat EACCES"})
        EXPECT_TRUE(tried.contains(each)) << each;
    EXPECT_GT(points, 25U);
    EXPECT_GT(told, 25U);
    const std::string scene = " (" + command_.name() + ")";
    testsupport::figure(points, "system calls of a safe write-back that can fail" + scene);
    testsupport::figure(faults, "failures of them, each in a process of its own" + scene);
    testsupport::figure(told, "of these told by the exit status" + scene);
}

INSTANTIATE_TEST_SUITE_P(Names, TavctlFaults,
                         testing::Values(NamesCommand::Word::restore, NamesCommand::Word::backup,
                                         NamesCommand::Word::rename),
                         [](const auto& word) { return testfaults::wordOf(word.param); });

} // namespace
