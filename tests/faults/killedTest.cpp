// Processes that are ended at each of their system calls: what becomes of the stored names, and
// that the next process finds its way.
#include "tests/faults/faultMachine.h"
#include "tests/faults/listing.h"
#include "tests/faults/namesCommand.h"
#include "tests/faults/pluginCycle.h"
#include "tests/faults/systemCalls.h"
#include "tests/faults/tracedRun.h"
#include "tests/support/effort.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <set>

namespace {

using testfaults::CycleReport;
using testfaults::FaultMachine;
using testfaults::NamesCommand;
using testfaults::Plugin;
using testfaults::StoredNames;
using testfaults::SystemCall;
using testfaults::Verdict;
using testfaults::WatchedPart;

using Names = FaultMachine::Names;

// Ends the process at the call with this number. Calls that only have to do with its memory are
// passed over: from outside the process they are nothing.
testfaults::Decide killAt(std::size_t number) {
    return testfaults::onlyCall(number, {Verdict::Kind::kill, 0, 0});
}

// What a save leaves behind that was ended somewhere.
struct Left {
    std::size_t asBefore = 0;
    std::size_t asAfter = 0;
    std::size_t empty = 0;
    std::size_t cut = 0;
    std::size_t lost = 0; // entries, in all
};

class KilledInitialize : public testing::TestWithParam<Names> {
protected:
    void learn() {
        machine_.reset(Names::none);
        testfaults::warmUp();
        plugin_.emplace();
        machine_.reset(Names::none);
        live();
        withoutNames_ = report_->listing();
        machine_.reset(GetParam());
        live();
        whole_ = report_->listing();
        after_ = machine_.names().value_or("");
        before_ = FaultMachine::textOf(GetParam());
        ASSERT_NE(after_, before_);
        ASSERT_NE(whole_, "");
    }

    // Counts what the killed process left.
    void look(Left& left) const {
        const std::string now = machine_.names().value_or("");
        if (now == before_)
            ++left.asBefore;
        else if (now == after_)
            ++left.asAfter;
        else if (now.empty())
            ++left.empty;
        else
            ++left.cut;
        EXPECT_TRUE(now == before_ || after_.starts_with(now))
            << "nothing but a beginning of what was to be written:\n"
            << now;
        if (now != before_ && now != after_)
            left.lost += testfaults::parseNames(before_).size() - entriesKept(now);
    }

    [[nodiscard]] std::size_t entriesKept(const std::string& now) const {
        const StoredNames stored = testfaults::parseNames(now);
        std::size_t kept = 0;
        for (const auto& [slot, entry] : testfaults::parseNames(before_)) {
            const auto found = stored.find(slot);
            kept += found != stored.end() && found->second == entry ? 1 : 0;
        }
        return kept;
    }

    // The process after it: it finds everyone, by the names that are still there.
    void checkNext() const {
        const std::string found = machine_.names().value_or("");
        live();
        EXPECT_EQ(report_->listing(), found.empty() ? withoutNames_ : whole_);
        // What it gave it has stored: each name is there, and once.
        std::multiset<std::string> stored;
        for (const auto& [slot, entry] : testfaults::parseNames(machine_.names().value_or("")))
            stored.insert(entry.second);
        const auto names = testfaults::namesIn(testfaults::linesOf(report_->listing()));
        EXPECT_EQ(names.size(), FaultMachine::kDevices);
        for (const std::string& name : names)
            EXPECT_EQ(stored.count(name), 1U) << name;
    }

    // A life in another process.
    void live() const {
        const int ended = testfaults::runInChild([&] {
            testfaults::runCycle(*plugin_, *report_);
            return 0;
        });
        EXPECT_EQ(ended, 0);
        EXPECT_EQ(report_->status, 0);
    }

    FaultMachine machine_;
    // Never initialised in this process, so that each child knows of nothing.
    std::optional<Plugin> plugin_;
    const testfaults::SharedValue<CycleReport> report_;
    std::string whole_;
    std::string withoutNames_;
    std::string before_;
    std::string after_;
};

TEST_P(KilledInitialize, AnywhereLosesNoStoredNameAndTheNextOneSucceeds) {
    ASSERT_NO_FATAL_FAILURE(learn());
    Left left;
    std::size_t number = 0;
    for (;; ++number) {
        SCOPED_TRACE("killed at call " + std::to_string(number));
        ASSERT_LT(number, 2000U);
        machine_.reset(GetParam());
        const auto end = testfaults::runTraced(
            [&] {
                const WatchedPart watched;
                testfaults::runCycle(*plugin_, *report_);
                return report_->status == 0 ? 0 : 1;
            },
            killAt(number));
        if (end.signal == 0) {
            EXPECT_EQ(end.exitStatus, 0);
            break; // there are no more calls
        }
        ASSERT_EQ(end.signal, SIGKILL);
        look(left);
        checkNext();
    }
    EXPECT_GT(number, 60U);
    EXPECT_GT(left.asBefore, 50U);
    EXPECT_GE(left.asAfter, 3U); // at least closing the file, the lock's release and its closing
    // What is there is not touched: new names are written behind it.
    EXPECT_EQ(left.empty, 0U);
    EXPECT_EQ(left.lost, 0U);
    const std::string scene = GetParam() == Names::none   ? " (no name file yet)"
                              : GetParam() == Names::some ? " (small name file)"
                                                          : " (large name file)";
    testsupport::figure(number, "system calls at which an initialize was killed" + scene);
    testsupport::figure(left.lost, "stored names lost" + scene);
    testsupport::figure(left.cut, "of these left a part of the new names" + scene);
}

INSTANTIATE_TEST_SUITE_P(NameFile, KilledInitialize,
                         testing::Values(Names::some, Names::many, Names::none),
                         [](const auto& scene) {
                             return scene.param == Names::some   ? "Small"
                                    : scene.param == Names::many ? "Large"
                                                                 : "Missing";
                         });

class KilledTavctl : public testing::TestWithParam<NamesCommand::Word> {
protected:
    NamesCommand command_{GetParam()};
};

TEST_P(KilledTavctl, AnywhereLeavesTheOldFileOrTheNewOneWhole) {
    command_.reset();
    const std::string before = command_.written();
    const auto letBe = [](const SystemCall&) { return Verdict{}; };
    ASSERT_EQ(command_.run(letBe).exitStatus, 0);
    const std::string after = command_.written();
    ASSERT_NE(after, before);
    ASSERT_NE(after, "");
    std::size_t number = 0;
    std::size_t old = 0;
    std::size_t leftovers = 0;
    for (;; ++number) {
        SCOPED_TRACE("killed at call " + std::to_string(number));
        ASSERT_LT(number, 2000U);
        command_.reset();
        const auto end = command_.run(killAt(number));
        if (end.signal == 0) {
            EXPECT_EQ(end.exitStatus, 0);
            break;
        }
        ASSERT_EQ(end.signal, SIGKILL);
        const std::string now = command_.written();
        EXPECT_TRUE(now == before || now == after) << now;
        old += now == before ? 1 : 0;
        leftovers += command_.hasLeftovers() ? 1 : 0;
        // Nobody has to clear up before the next time.
        if (now == before || command_.isRepeatable()) {
            EXPECT_EQ(command_.run(letBe).exitStatus, 0);
        }
        EXPECT_EQ(command_.written(), after);
    }
    EXPECT_GT(number, 30U);
    EXPECT_GT(old, 20U);
    EXPECT_GT(number - old, 1U);
    const std::string scene = " (" + command_.name() + ")";
    testsupport::figure(number, "system calls at which a safe write-back was killed" + scene);
    testsupport::figure(old, "of these left the old file whole, the others the new one" + scene);
    testsupport::figure(leftovers, "of these left a temporary file beside it" + scene);
}

INSTANTIATE_TEST_SUITE_P(Names, KilledTavctl,
                         testing::Values(NamesCommand::Word::restore, NamesCommand::Word::backup,
                                         NamesCommand::Word::rename),
                         [](const auto& word) { return testfaults::wordOf(word.param); });

} // namespace
