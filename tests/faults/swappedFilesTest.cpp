// Somebody who may write to the state folder, but not elsewhere, puts other things in the place of
// the files in it, at each moment of an initialize, and of a command that writes names: nothing
// outside is touched, nobody waits, and no file becomes readable that was not.
#include "tests/faults/faultMachine.h"
#include "tests/faults/namesCommand.h"
#include "tests/faults/pluginCycle.h"
#include "tests/faults/systemCalls.h"
#include "tests/faults/tracedRun.h"
#include "tests/support/effort.h"
#include "tests/support/fileText.h"
#include "tests/support/otherUser.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <optional>

namespace {

namespace fs = std::filesystem;
using testfaults::CycleReport;
using testfaults::FaultMachine;
using testfaults::NamesCommand;
using testfaults::Plugin;
using testfaults::SystemCall;
using testfaults::Verdict;
using testfaults::WatchedPart;

// What comes into a file's place.
enum class Thing { pipe, link, danglingLink, nothing };

struct Swap {
    const char* name;
    Thing thing;
    const char* file; // in the state folder
};

void PrintTo(const Swap& swap, std::ostream* stream) {
    *stream << swap.name;
}

constexpr const char* kSecret = "nobody's business\n";
constexpr unsigned kPatience = 20; // seconds, after which a run counts as waiting for ever

// What the attacker is after: a file that he may not write, and a name for one that he may not
// make.
class Victims {
public:
    Victims() { std::ofstream(file()) << kSecret; }

    [[nodiscard]] fs::path file() const { return folder_.path() / "victim"; }
    [[nodiscard]] fs::path missing() const { return folder_.path() / "missing"; }

    [[nodiscard]] bool areUntouched() const {
        return testsupport::fileText(file()) == kSecret && !fs::exists(missing());
    }

private:
    testsupport::TemporaryFolder folder_;
};

class SwappedFiles : public testing::TestWithParam<Swap> {
protected:
    // Whether links are another user's, and so must not be followed.
    bool swap(const fs::path& state) const {
        const fs::path place = state / GetParam().file;
        std::error_code ignored;
        fs::remove(place, ignored);
        switch (GetParam().thing) {
        case Thing::pipe:
            EXPECT_EQ(mkfifo(place.c_str(), 0666), 0);
            return true;
        case Thing::link:
            fs::create_symlink(victims_.file(), place);
            return testsupport::OtherUser::take(place);
        case Thing::danglingLink:
            fs::create_symlink(victims_.missing(), place);
            return testsupport::OtherUser::take(place);
        case Thing::nothing:
            return true;
        }
        return true;
    }

    // Lets every call be, but swaps before the one with this number.
    [[nodiscard]] testfaults::Decide swapAt(std::size_t number, const fs::path& state) {
        return [this, state, count = std::size_t{0}, number](const SystemCall&) mutable {
            if (count++ == number)
                mustNotBeFollowed_ = swap(state);
            return Verdict{};
        };
    }

    void check(const testfaults::TracedEnd& end, const fs::path& state) const {
        EXPECT_EQ(end.signal, 0) << "it waited";
        EXPECT_TRUE(!mustNotBeFollowed_ || victims_.areUntouched());
        for (const auto& entry : fs::directory_iterator(state)) {
            const fs::perms others = fs::symlink_status(entry.path()).permissions() &
                                     (fs::perms::group_all | fs::perms::others_all);
            EXPECT_TRUE(!entry.is_regular_file() || entry.is_symlink() || others == fs::perms::none)
                << entry.path();
        }
    }

    // Every moment, but where each takes ten times as long.
    static std::size_t stride() { return testsupport::isSanitized() ? 7 : 1; }

    Victims victims_;
    bool mustNotBeFollowed_ = false;
};

class SwappedWhileInitializing : public SwappedFiles {};

TEST_P(SwappedWhileInitializing, NothingElseIsTouchedAndNobodyWaits) {
    const FaultMachine machine;
    machine.reset(FaultMachine::Names::none);
    testfaults::warmUp();
    const Plugin plugin; // never initialised in this process
    const testfaults::SharedValue<CycleReport> report;
    std::uint64_t failed = 0;
    std::size_t number = 0;
    for (bool swapped = true; swapped; number += stride()) {
        SCOPED_TRACE("swapped at call " + std::to_string(number));
        ASSERT_LT(number, 2000U);
        machine.reset(FaultMachine::Names::some);
        for (const char* file : {"zotavpci.ini", "zotavpci.loc"})
            fs::permissions(machine.state() / file, fs::perms(0600));
        std::size_t calls = 0;
        const auto decide = swapAt(number, machine.state());
        const auto end = testfaults::runTraced(
            [&] {
                umask(0);
                alarm(kPatience);
                const WatchedPart watched;
                testfaults::runCycle(plugin, *report);
                return 0;
            },
            [&](const SystemCall& call) {
                ++calls;
                return decide(call);
            });
        swapped = calls > number;
        check(end, machine.state());
        EXPECT_TRUE(testfaults::isDocumented(report->status)) << report->status;
        failed += report->status != 0 ? 1 : 0;
    }
    testsupport::figure(number / stride(),
                        std::string("moments of an initialize at which there came a ") +
                            GetParam().name);
    testsupport::figure(failed, "of these initializes told of it as a status");
}

INSTANTIATE_TEST_SUITE_P(
    Files, SwappedWhileInitializing,
    testing::Values(Swap{"PipeForTheNames", Thing::pipe, "zotavpci.ini"},
                    Swap{"LinkForTheNames", Thing::link, "zotavpci.ini"},
                    Swap{"DanglingLinkForTheNames", Thing::danglingLink, "zotavpci.ini"},
                    Swap{"GapForTheNames", Thing::nothing, "zotavpci.ini"},
                    Swap{"PipeForTheLock", Thing::pipe, "zotavpci.loc"},
                    Swap{"DanglingLinkForTheLock", Thing::danglingLink, "zotavpci.loc"}),
    [](const auto& swap) { return swap.param.name; });

class SwappedWhileRestoring : public SwappedFiles {};

TEST_P(SwappedWhileRestoring, NothingElseIsTouchedAndNobodyWaits) {
    const NamesCommand command(NamesCommand::Word::restore);
    const fs::path state = command.target().parent_path();
    std::size_t number = 0;
    for (bool swapped = true; swapped; number += stride()) {
        SCOPED_TRACE("swapped at call " + std::to_string(number));
        ASSERT_LT(number, 2000U);
        command.reset();
        for (const char* file : {"zotavpci.ini", "zotavpci.loc"})
            fs::permissions(state / file, fs::perms(0600));
        std::size_t calls = 0;
        const auto decide = swapAt(number, state);
        const auto end = command.run([&](const SystemCall& call) {
            ++calls;
            return decide(call);
        });
        swapped = calls > number;
        check(end, state);
    }
    testsupport::figure(number / stride(),
                        std::string("moments of names restore at which there came a ") +
                            GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Files, SwappedWhileRestoring,
                         testing::Values(Swap{"LinkForTheTemporaryFile", Thing::link, "ini$$0.TMP"},
                                         Swap{"PipeForTheTemporaryFile", Thing::pipe, "ini$$0.TMP"},
                                         Swap{"LinkForTheNames", Thing::link, "zotavpci.ini"},
                                         Swap{"DanglingLinkForTheNames", Thing::danglingLink,
                                              "zotavpci.ini"},
                                         Swap{"PipeForTheNames", Thing::pipe, "zotavpci.ini"}),
                         [](const auto& swap) { return swap.param.name; });

} // namespace
