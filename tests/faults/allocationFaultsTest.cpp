// Each allocation of a whole life of the plug-in fails once, those that the C library and the
// loader make for it included: what the host is told, that nothing stays behind, and that the next
// life is whole.
#include "tests/support/allocationFaults.h"

#include "tests/faults/faultMachine.h"
#include "tests/faults/listing.h"
#include "tests/faults/pluginCycle.h"
#include "tests/support/effort.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>

namespace {

using testfaults::CycleReport;
using testfaults::FaultMachine;
using testfaults::kNotLoaded;
using testfaults::Lines;
using testfaults::Plugin;
using testfaults::StoredNames;
using testsupport::AllocationFault;
using testsupport::AllocationKind;

// The address sanitizer keeps a note of each library that comes and goes, so blocks cannot be
// balanced; it finds what nobody refers to any more by itself, when the program ends.
#ifdef TAV_SANITIZED
constexpr bool kBalancesBlocks = false;
#else
constexpr bool kBalancesBlocks = true;
#endif

// The plug-in loaded, a life in which an allocation fails, one more, and the plug-in unloaded.
struct Lives {
    CycleReport failing;
    CycleReport next;
    testfaults::NamesSeen names; // after the first
    bool happened = false;
    AllocationKind kind{};
    std::int64_t blocksLeft = 0;
    std::int64_t descriptorsLeft = 0;
};

class AllocationFaults : public testing::TestWithParam<FaultMachine::Names> {
protected:
    // The nth allocation of the first life fails; none for 0.
    void run(std::size_t nth) {
        machine_.reset(GetParam());
        const auto descriptors = static_cast<std::int64_t>(testfaults::openDescriptors());
        const std::int64_t blocks = testsupport::liveAllocations();
        {
            const Plugin plugin;
            {
                const AllocationFault fault(nth);
                testfaults::runCycle(plugin, lives_->failing);
                lives_->happened = fault.happened();
                lives_->kind = fault.kind();
            }
            machine_.look(lives_->names);
            testfaults::runCycle(plugin, lives_->next);
        }
        dlerror(); // gives back what the loader said last
        dlerror();
        lives_->blocksLeft = testsupport::liveAllocations() - blocks;
        lives_->descriptorsLeft =
            static_cast<std::int64_t>(testfaults::openDescriptors()) - descriptors;
    }

    // The run in which nothing fails.
    void learn() {
        machine_.reset(GetParam());
        testfaults::warmUp();
        run(0);
        ASSERT_EQ(lives_->failing.status, 0);
        ASSERT_TRUE(lives_->blocksLeft == 0 || !kBalancesBlocks);
        whole_ = testfaults::linesOf(lives_->failing.listing());
        ASSERT_EQ(whole_.size(), FaultMachine::kDevices);
        before_ = testfaults::parseNames(FaultMachine::textOf(GetParam()));
        after_ = testfaults::parseNames(lives_->names.text());
        ASSERT_EQ(testfaults::linesOf(lives_->next.listing()), whole_);
    }

    void checkFailing() {
        const CycleReport& failing = lives_->failing;
        const Lines listing = testfaults::linesOf(failing.listing());
        EXPECT_TRUE(testfaults::isDocumented(failing.status)) << failing.status;
        EXPECT_EQ(failing.wrongQueries, 0U);
        EXPECT_TRUE(failing.status == 0 || failing.devices == 0);
        // Memory gives out in one place: in the building of the list, or in one query.
        EXPECT_LE(failing.faultedQueries, 1U);
        EXPECT_TRUE(failing.faultedQueries == 0 ? testfaults::isPartOf(listing, whole_)
                                                : listing.size() == whole_.size())
            << failing.listing();
        devicesLeftOut_ += failing.status == 0 && failing.devices != whole_.size() ? 1 : 0;
        faultedQueries_ += failing.faultedQueries;
    }

    void checkNames() {
        const StoredNames now = testfaults::parseNames(lives_->names.text());
        if (lives_->failing.status != 0) {
            EXPECT_EQ(lives_->names.text(), FaultMachine::textOf(GetParam()));
            return;
        }
        // Nothing that was there is gone, and what is new is right. A name may be stored for a
        // device that came to nothing after that, or be cut short between its two keys.
        for (const auto& [slot, entry] : before_)
            EXPECT_EQ(now.count(slot) != 0 ? now.at(slot) : testfaults::StoredName(), entry);
        for (const auto& [slot, entry] : now) {
            const bool isWhole = after_.contains(slot) && after_.at(slot) == entry;
            halfNames_ += isWhole ? 0 : 1;
            EXPECT_TRUE(isWhole || (after_.contains(slot) && entry.second.empty() &&
                                    after_.at(slot).first == entry.first))
                << slot << " " << entry.first << " " << entry.second;
        }
        if (lives_->failing.faultedQueries != 0)
            return;
        const auto found = testfaults::namesIn(testfaults::linesOf(lives_->failing.listing()));
        for (const auto& [slot, entry] : after_) {
            EXPECT_TRUE(now.contains(slot) || !found.contains(entry.second)) << slot;
        }
    }

    void checkNextLife() {
        if (lives_->next.status == 0 && testfaults::linesOf(lives_->next.listing()) == whole_)
            return;
        // Two things last until the library is unloaded: the models that were read before a
        // description could not be, and a search path that the loader had no memory to note.
        if (lives_->next.status == kNotLoaded) {
            EXPECT_EQ(lives_->failing.status, kNotLoaded);
            ++pathsForgotten_;
        } else {
            EXPECT_EQ(lives_->next.status, 0);
            EXPECT_NE(lives_->failing.status, 0);
            EXPECT_TRUE(testfaults::isPartOf(testfaults::linesOf(lives_->next.listing()), whole_));
            ++modelsLeftOut_;
        }
        const Plugin plugin;
        testfaults::runCycle(plugin, lives_->next);
        EXPECT_EQ(lives_->next.status, 0);
        EXPECT_EQ(testfaults::linesOf(lives_->next.listing()), whole_);
    }

    FaultMachine machine_;
    std::unique_ptr<Lives> lives_ = std::make_unique<Lives>();
    Lines whole_;
    StoredNames before_;
    StoredNames after_;
    std::size_t devicesLeftOut_ = 0;
    std::size_t faultedQueries_ = 0;
    std::size_t halfNames_ = 0;
    std::size_t modelsLeftOut_ = 0;
    std::size_t pathsForgotten_ = 0;
};

TEST_P(AllocationFaults, EachOnceGivesADocumentedStatusAndLeavesNothingBehind) {
    ASSERT_NO_FATAL_FAILURE(learn());
    std::map<AllocationKind, std::size_t> kinds;
    std::map<std::int32_t, std::size_t> statuses;
    std::size_t nth = 1;
    for (;; ++nth) {
        ASSERT_LT(nth, 20000U);
        SCOPED_TRACE("allocation " + std::to_string(nth));
        run(nth);
        if (!lives_->happened)
            break;
        ++kinds[lives_->kind];
        ++statuses[lives_->failing.status];
        checkFailing();
        checkNames();
        EXPECT_TRUE(lives_->blocksLeft == 0 || !kBalancesBlocks) << lives_->blocksLeft;
        EXPECT_EQ(lives_->descriptorsLeft, 0);
        checkNextLife();
    }
    EXPECT_EQ(testfaults::linesOf(lives_->failing.listing()), whole_);
    // How many there are depends on the C++ library and on the loader.
    EXPECT_GT(nth, 500U);
    EXPECT_GT(kinds[AllocationKind::operatorNew], 300U);
    EXPECT_GT(kinds[AllocationKind::malloc], 10U);
    EXPECT_GT(kinds[AllocationKind::calloc], 5U);
    EXPECT_GT(kinds[AllocationKind::realloc], 50U);
    EXPECT_GT(statuses[-52000], 50U);
    EXPECT_THAT(statuses, testing::SizeIs(testing::Ge(8U)));
    EXPECT_GT(devicesLeftOut_, 100U);
    EXPECT_GT(faultedQueries_, 0U);
    EXPECT_LE(pathsForgotten_, 2U);
    const std::string scene =
        GetParam() == FaultMachine::Names::none ? " (no name file yet)" : " (with a name file)";
    testsupport::figure(nth - 1, "allocations of the plug-in, each failed once" + scene);
    testsupport::figure(nth - 1 - statuses[0], "of these told to the host as a status" + scene);
    testsupport::figure(devicesLeftOut_, "of these answered with devices left out" + scene);
    testsupport::figure(faultedQueries_, "of these told by one query" + scene);
    testsupport::figure(halfNames_, "that stored a model without a name" + scene);
    testsupport::figure(modelsLeftOut_,
                        "that left models out until the library was unloaded" + scene);
    testsupport::figure(pathsForgotten_,
                        "after which the loader had to load the plug-in anew" + scene);
}

INSTANTIATE_TEST_SUITE_P(NameFile, AllocationFaults,
                         testing::Values(FaultMachine::Names::some, FaultMachine::Names::none),
                         [](const auto& scene) {
                             return scene.param == FaultMachine::Names::some ? "Stored" : "Missing";
                         });

} // namespace
