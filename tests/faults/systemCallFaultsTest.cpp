// Each system call of a whole life of the plug-in fails once, in each way that it can: what the
// host is told, what becomes of the name file, and whether the lives after it are whole.
#include "tests/faults/faultMachine.h"
#include "tests/faults/listing.h"
#include "tests/faults/pluginCycle.h"
#include "tests/faults/systemCalls.h"
#include "tests/support/effort.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>

namespace {

using testfaults::CallFault;
using testfaults::CycleReport;
using testfaults::FaultMachine;
using testfaults::isPartOf;
using testfaults::kNotLoaded;
using testfaults::Lines;
using testfaults::linesOf;
using testfaults::namesIn;
using testfaults::Plugin;
using testfaults::StoredNames;
using testfaults::SystemCall;
using testfaults::Verdict;
using testfaults::WatchedPart;

constexpr std::int32_t kNotSaved = -313319;
constexpr std::int32_t kCannotOpen = -313316;

// One run in a child: a life in which a call fails and another one after it, or one in a process
// that knows of nothing.
struct Report {
    CycleReport failing;
    CycleReport next;
    CycleReport fresh;
    std::size_t descriptorsBefore = 0;
    std::size_t descriptorsAfter = 0;
    testfaults::NamesSeen names; // after the first life
};

bool takesRoom(const SystemCall& call) {
    return call.number == SYS_fallocate;
}

bool opensForWriting(const SystemCall& call) {
    return call.number == SYS_openat && (call.arguments[2] & O_ACCMODE) == O_RDWR;
}

class SystemCallFaults : public testing::TestWithParam<FaultMachine::Names> {
protected:
    // What the child tells; `decide` sees the calls of the first life.
    void run(FaultMachine::Names names, const testfaults::Decide& decide) {
        machine_.reset(names);
        *report_ = {};
        end_ = testfaults::runTraced([&] { return live(); }, decide);
    }

    int live() const {
        Report& report = *report_;
        report.descriptorsBefore = testfaults::openDescriptors();
        {
            const WatchedPart watched;
            testfaults::runCycle(*plugin_, report.failing);
        }
        report.descriptorsAfter = testfaults::openDescriptors();
        machine_.look(report.names);
        testfaults::runCycle(*plugin_, report.next);
        return 0;
    }

    // Another process.
    Lines liveAfresh() {
        const int ended = testfaults::runInChild([&] {
            testfaults::runCycle(*plugin_, report_->fresh);
            return 0;
        });
        EXPECT_EQ(ended, 0);
        EXPECT_EQ(report_->fresh.status, 0);
        return linesOf(report_->fresh.listing());
    }

    // The run in which nothing fails.
    void learn() {
        machine_.reset(FaultMachine::Names::none);
        testfaults::warmUp();
        plugin_.emplace();
        machine_.reset(FaultMachine::Names::none);
        withoutNames_ = liveAfresh();
        run(GetParam(), testfaults::listCalls(calls_));
        ASSERT_EQ(end_.exitStatus, 0);
        ASSERT_EQ(report_->failing.status, 0);
        whole_ = linesOf(report_->failing.listing());
        ASSERT_EQ(whole_.size(), FaultMachine::kDevices);
        ASSERT_EQ(liveAfresh(), whole_);
        namesAfter_ = report_->names.text();
        const auto room = std::find_if(calls_.begin(), calls_.end(), takesRoom);
        ASSERT_NE(room, calls_.end());
        const auto open =
            std::find_if(std::make_reverse_iterator(room), calls_.rend(), opensForWriting);
        ASSERT_NE(open, calls_.rend());
        const auto isClose = [](const SystemCall& call) { return call.number == SYS_close; };
        const auto isProtection = [](const SystemCall& call) {
            return call.number == SYS_mprotect;
        };
        const auto numberOf = [&](auto found) {
            return static_cast<std::size_t>(found - calls_.begin());
        };
        firstOfSave_ = numberOf(open.base() - 1);
        roomOfSave_ = numberOf(room);
        lastOfSave_ = numberOf(std::find_if(room, calls_.end(), isClose));
        loaderEnds_ = numberOf(std::find_if(calls_.begin(), calls_.end(), isProtection));
        ASSERT_LT(loaderEnds_, firstOfSave_);
        ASSERT_LT(lastOfSave_, calls_.size());
    }

    // What the first life left in the name file, the call with this number having failed so.
    void checkNames(std::size_t number, const CallFault& fault) const {
        const std::int32_t status = report_->failing.status;
        if (number >= firstOfSave_ && number <= lastOfSave_ && status != 0) {
            EXPECT_EQ(status, kNotSaved);
            EXPECT_FALSE(fault.isHarmless());
            if (number <= roomOfSave_) {
                EXPECT_EQ(report_->names.text(), FaultMachine::textOf(GetParam()))
                    << "nothing is written that has no room";
            } else {
                EXPECT_FALSE(report_->names.isThere)
                    << "a save in place that fails deletes the file";
            }
        } else if (number >= firstOfSave_ && number <= lastOfSave_) {
            EXPECT_EQ(report_->names.text(), namesAfter_);
        } else if (number > lastOfSave_) {
            EXPECT_EQ(report_->names.text(), namesAfter_);
        } else if (status != 0) {
            EXPECT_EQ(report_->names.text(), FaultMachine::textOf(GetParam()));
        } else {
            // What was there, and the names of those who were found.
            const std::set<std::string> found = namesIn(linesOf(report_->failing.listing()));
            StoredNames expected = testfaults::parseNames(FaultMachine::textOf(GetParam()));
            for (const auto& [slot, entry] : testfaults::parseNames(namesAfter_)) {
                if (found.contains(entry.second))
                    expected[slot] = entry;
            }
            EXPECT_EQ(testfaults::parseNames(report_->names.text()), expected);
        }
    }

    void checkFailing(std::size_t number, const CallFault& fault) {
        const CycleReport& failing = report_->failing;
        const Lines listing = linesOf(failing.listing());
        EXPECT_TRUE(testfaults::isDocumented(failing.status)) << failing.status;
        EXPECT_EQ(failing.faultedQueries + failing.wrongQueries, 0U);
        EXPECT_EQ(report_->descriptorsAfter, report_->descriptorsBefore);
        EXPECT_EQ(listing.size(), failing.devices);
        EXPECT_TRUE(isPartOf(listing, whole_)) << failing.listing();
        EXPECT_TRUE(failing.status == 0 || failing.devices == 0);
        devicesLeftOut_ += failing.status == 0 && listing != whole_ ? 1 : 0;
        // A signal, or a call that does only a part, is nobody's failure; the loader, which is the
        // system's, sees that differently.
        const bool isLoaders = failing.status == kNotLoaded && number < loaderEnds_;
        EXPECT_TRUE(!fault.isHarmless() || isLoaders || listing == whole_) << failing.status;
    }

    void checkNextLives() {
        EXPECT_EQ(report_->next.status, 0);
        const Lines& expected = report_->names.isThere ? whole_ : withoutNames_;
        const Lines next = linesOf(report_->next.listing());
        if (next == expected)
            return;
        // The models that were read before a description could not be are the models until the
        // library is unloaded.
        EXPECT_EQ(report_->failing.status, kCannotOpen);
        EXPECT_TRUE(isPartOf(next, expected)) << report_->next.listing();
        EXPECT_EQ(liveAfresh(), expected);
        ++modelsLeftOut_;
    }

    FaultMachine machine_;
    // Never initialised in this process, so that each child knows of nothing.
    std::optional<Plugin> plugin_;
    testfaults::SharedValue<Report> report_;
    testfaults::TracedEnd end_;
    std::vector<SystemCall> calls_;
    Lines whole_;
    Lines withoutNames_;
    std::string namesAfter_;
    std::size_t firstOfSave_ = 0;
    std::size_t roomOfSave_ = 0;
    std::size_t lastOfSave_ = 0;
    std::size_t loaderEnds_ = 0;
    std::size_t devicesLeftOut_ = 0;
    std::size_t modelsLeftOut_ = 0;
};

TEST_P(SystemCallFaults, EachOnceGivesADocumentedStatusAndLeavesNothingBehind) {
    ASSERT_NO_FATAL_FAILURE(learn());
    std::set<std::string> tried;
    std::map<std::int32_t, std::size_t> statuses;
    std::size_t points = 0;
    std::size_t faults = 0;
    for (std::size_t number = 0; number < calls_.size(); ++number) {
        const std::string call = testfaults::nameOf(calls_[number]);
        const auto ways = testfaults::faultsOf(calls_[number]);
        points += ways.empty() ? 0 : 1;
        for (const CallFault& fault : ways) {
            SCOPED_TRACE("call " + std::to_string(number) + ", " + call + " " + fault.name);
            run(GetParam(), testfaults::onlyCall(number, fault.verdict));
            ASSERT_EQ(end_.exitStatus, 0) << "signal " << end_.signal;
            checkFailing(number, fault);
            checkNames(number, fault);
            checkNextLives();
            tried.insert(call + " " + fault.name);
            ++statuses[report_->failing.status];
            ++faults;
        }
    }
    // Every kind of call that there is below the plug-in, in every way. What the loader and the C
    // library make of one operation depends on them, so there is no exact number.
    for (const char* each :
         {"openat EACCES",    "openat EMFILE",    "openat EINTR",      "openat EIO",
          "fallocate ENOSPC", "fallocate EDQUOT", "fallocate EFBIG",   "fallocate EOPNOTSUPP",
          "read EIO",         "read EINTR",       "read short",        "write ENOSPC",
          "write EIO",        "write EINTR",      "write short",       "close EIO",
          "close EINTR",      "close ENOSPC",     "fcntl EIO",         "fcntl ENOLCK",
          "fcntl EINTR",      "getdents64 EIO",   "newfstatat EACCES", "newfstatat EIO",
          "mmap EACCES",      "mmap ENOMEM",      "mprotect EACCES"})
        EXPECT_TRUE(tried.contains(each)) << each;
    for (const char* each : {"openat ENOSPC", "fchmod EIO"}) // files that are made
        EXPECT_EQ(tried.contains(each), GetParam() == FaultMachine::Names::none);
    EXPECT_GT(points, 60U);
    EXPECT_GT(faults, 180U);
    EXPECT_THAT(statuses, testing::SizeIs(testing::Ge(8U)));
    // Bridges and devices are of one reading of the bus, and every failure of that is told.
    EXPECT_EQ(devicesLeftOut_, 0U);
    EXPECT_GT(modelsLeftOut_, 0U);
    const std::string scene =
        GetParam() == FaultMachine::Names::none ? " (no name file yet)" : " (with a name file)";
    testsupport::figure(points, "system calls of the plug-in that can fail" + scene);
    testsupport::figure(faults, "failures of them, each in a life of its own" + scene);
    testsupport::figure(faults - statuses[0], "of these told to the host as a status" + scene);
    testsupport::figure(devicesLeftOut_, "of these answered with devices left out" + scene);
    testsupport::figure(modelsLeftOut_,
                        "that left models out until the library was unloaded" + scene);
}

INSTANTIATE_TEST_SUITE_P(NameFile, SystemCallFaults,
                         testing::Values(FaultMachine::Names::some, FaultMachine::Names::none),
                         [](const auto& scene) {
                             return scene.param == FaultMachine::Names::some ? "Stored" : "Missing";
                         });

} // namespace
