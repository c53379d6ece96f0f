// tavctl ended early at moments all over its run: what it leaves, and how it ends.
#include "platform/fileLock.h"
#include "tests/faults/faultMachine.h"
#include "tests/faults/systemCalls.h"
#include "tests/faults/tavctlRun.h"
#include "tests/support/effort.h"
#include "tests/support/environmentValue.h"
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <set>

namespace {

namespace fs = std::filesystem;
using testfaults::FaultMachine;
using testfaults::SystemCall;
using testfaults::TracedEnd;
using testfaults::Verdict;
using testsupport::EnvironmentValue;

constexpr int kEnds[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};

struct EndedCommand {
    const char* name;
    std::vector<std::string> words;
    const char* result = nullptr; // the file that it writes, among the results
    bool talks = false;           // to another program, through pipes
    bool names = false;           // it is there to write the terminal names
};

void PrintTo(const EndedCommand& command, std::ostream* stream) {
    *stream << command.name;
}

class EarlyEnd : public testing::TestWithParam<EndedCommand> {
protected:
    EarlyEnd() {
        fs::create_directory(temporary());
        temporaryVariable_.emplace("TMPDIR", temporary().string());
        // Reads all of it, and gives something at once.
        const fs::path dot = folder_.file("programs/dot", "#!/bin/sh\nexec cat\n");
        fs::permissions(dot, fs::perms::owner_all);
        const std::string before = testsupport::environmentValue("PATH").value_or("");
        path_.emplace("PATH", dot.parent_path().string() + ":" + before);
    }

    [[nodiscard]] fs::path temporary() const { return folder_.path() / "temporary"; }
    [[nodiscard]] fs::path results() const { return folder_.path() / "results"; }
    [[nodiscard]] fs::path saved() const { return folder_.path() / "saved.ini"; }

    void reset() const {
        machine_.reset(FaultMachine::Names::some);
        fs::remove_all(results());
        fs::create_directory(results());
        std::ofstream(saved(), std::ios::binary)
            << "[MR00:00,28]\r\nModel = TAV-B3 Switch Box\r\nTerminalName = TAV9\r\n";
    }

    [[nodiscard]] TracedEnd run(const testfaults::Decide& decide) const {
        std::vector<std::string> words = GetParam().words;
        for (std::string& word : words) {
            if (word == "RESULT")
                word = (results() / GetParam().result).string();
            else if (word == "SAVED")
                word = saved().string();
            else if (word == "STATE")
                word = machine_.state().string();
        }
        return testfaults::runTavctl(words, decide);
    }

    [[nodiscard]] static std::set<std::string> in(const fs::path& folder) {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder))
            names.insert(entry.path().filename().string());
        return names;
    }

    [[nodiscard]] std::string result() const {
        return GetParam().result == nullptr
                   ? std::string()
                   : testsupport::fileTextIfAny(results() / GetParam().result);
    }

    void expectNothingLeft() const {
        EXPECT_EQ(in(temporary()), std::set<std::string>());
        std::set<std::string> state = in(machine_.state());
        state.erase("zotavpci.ini.before"); // what restore keeps
        EXPECT_EQ(state, (std::set<std::string>{"zotavpci.ini", "zotavpci.loc"}));
        for (const std::string& name : in(results()))
            EXPECT_EQ(name, GetParam().result == nullptr ? "" : GetParam().result);
    }

    testsupport::TemporaryFolder folder_;
    FaultMachine machine_;
    std::optional<EnvironmentValue> temporaryVariable_;
    std::optional<EnvironmentValue> path_;
};

TEST_P(EarlyEnd, LeavesNothingHalfDoneAndIsByThatSignal) {
    reset();
    const std::string namesBefore = *machine_.names();
    std::vector<SystemCall> calls;
    ASSERT_EQ(run(testfaults::listCalls(calls)).exitStatus, 0);
    const std::string namesAfter = *machine_.names();
    const std::string wholeResult = result();
    EXPECT_TRUE(namesAfter != namesBefore || !GetParam().names);
    EXPECT_EQ(wholeResult.empty(), GetParam().result == nullptr);
    expectNothingLeft();

    // A step that shares nothing with the number of signals, so that each of them comes anywhere.
    const std::size_t moments = testsupport::effort(30, 100'000);
    const std::size_t step = std::max<std::size_t>(1, calls.size() / moments) | 1U;
    std::size_t tried = 0;
    std::size_t ended = 0;
    std::size_t done = 0;
    for (std::size_t number = 0; number < calls.size(); number += step, ++tried) {
        const int signal = kEnds[tried % std::size(kEnds)];
        SCOPED_TRACE("signal " + std::to_string(signal) + " at call " + std::to_string(number) +
                     ", " + testfaults::nameOf(calls[number]));
        reset();
        bool isSent = false;
        const TracedEnd end =
            run([&, only = testfaults::onlyCall(number, Verdict{Verdict::Kind::signal, signal, 0})](
                    const SystemCall& call) {
                const Verdict verdict = only(call);
                isSent = isSent || verdict.kind == Verdict::Kind::signal;
                return verdict;
            });
        if (!isSent)
            continue; // how often a pipe is looked at is not the same in each run
        // While it talks to another program a broken pipe is that program's affair.
        if (signal != SIGPIPE || !GetParam().talks || end.exitStatus != 0) {
            EXPECT_EQ(end.signal, signal);
        }
        ++ended;
        expectNothingLeft();
        const std::string names = *machine_.names();
        EXPECT_TRUE(names == namesBefore || names == namesAfter) << names;
        EXPECT_TRUE(result().empty() || result() == wholeResult) << result();
        done += names == namesAfter && result() == wholeResult ? 1U : 0U;
    }
    EXPECT_GT(ended, 20U);
    EXPECT_TRUE(done > 0 || !GetParam().names);
    const std::string scene = std::string(" (") + GetParam().name + ")";
    testsupport::figure(calls.size(), "system calls of a run" + scene);
    testsupport::figure(ended, "of them at which it was ended early" + scene);
}

// Nothing is being saved yet.
TEST(EarlyEndOfAWait, IsNotHeldBack) {
    const FaultMachine machine;
    machine.reset(FaultMachine::Names::some);
    platform::FileLock other;
    ASSERT_EQ(other.open((machine.state() / "zotavpci.loc").c_str()), platform::kNoSystemError);
    ASSERT_EQ(other.lock(), platform::kNoSystemError);
    for (const char* words : {"list", "tree", "names", "restore"}) {
        std::vector<std::string> all{words};
        if (all.front() == "restore")
            all = {"names", "restore", "--force", machine.nameFile().string()};
        const TracedEnd end = testfaults::runTavctl(all, [](const SystemCall& call) {
            const bool waits =
                call.number == SYS_fcntl && call.arguments[1] == std::uint64_t{F_OFD_SETLKW};
            return waits ? Verdict{Verdict::Kind::signal, SIGTERM, 0} : Verdict{};
        });
        EXPECT_EQ(end.signal, SIGTERM) << words;
    }
    EXPECT_EQ(*machine.names(), FaultMachine::textOf(FaultMachine::Names::some));
}

INSTANTIATE_TEST_SUITE_P(
    Tavctl, EarlyEnd,
    testing::Values(EndedCommand{"Backup", {"names", "backup", "RESULT"}, "backup.ini"},
                    EndedCommand{
                        "Restore", {"names", "restore", "--force", "SAVED"}, nullptr, false, true},
                    EndedCommand{"DrawDot", {"draw", "--format", "dot", "-o", "RESULT"}, "bus.dot"},
                    EndedCommand{"DrawSvg", {"draw", "-o", "RESULT"}, "bus.svg", true},
                    EndedCommand{"Record", {"record", "-o", "RESULT"}, "bus.txt"},
                    EndedCommand{"Tree", {"tree"}},
                    EndedCommand{"NamesPreview", {"names", "preview"}},
                    EndedCommand{"List", {"list", "--state", "STATE"}, nullptr, false, true}),
    [](const auto& command) { return command.param.name; });

} // namespace
