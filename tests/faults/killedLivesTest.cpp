// Processes that are ended at any moment of their lives, as often as the time that a moment takes
// has it: what becomes of the stored names. killedTest.cpp ends them once at each system call.
#include "tests/faults/faultMachine.h"
#include "tests/faults/pluginCycle.h"
#include "tests/faults/tracedRun.h"
#include "tests/support/effort.h"
#include "tests/support/environmentValue.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <memory>
#include <optional>
#include <random>
#include <thread>

namespace {

using testfaults::CycleReport;
using testfaults::FaultMachine;
using testfaults::Plugin;
using testfaults::StoredNames;
using Clock = std::chrono::steady_clock;

// What is in the name file before each life.
struct Scene {
    const char* name;
    const char* folder;   // where temporary files are made; null: where they always are
    unsigned names;       // of devices that are not there
    bool devicesAreKnown; // and those of all that are there
    unsigned cycles;      // initialises in one life
    // By hand, so that a save writes all of it in its own way, once: that can cost names.
    bool isEdited = false;
};

void PrintTo(const Scene& scene, std::ostream* stream) {
    *stream << scene.name;
}

class KilledLives : public testing::TestWithParam<Scene> {
protected:
    KilledLives() {
        if (GetParam().folder != nullptr)
            temporary_.emplace("TMPDIR", GetParam().folder);
        machine_.emplace();
        plugin_.emplace();
        makeNames();
    }

    void makeNames() {
        machine_->reset(FaultMachine::Names::none);
        if (GetParam().devicesAreKnown) {
            EXPECT_EQ(testfaults::runInChild([&] { return live(1); }), 0);
            before_ = machine_->names().value_or("");
        }
        for (unsigned number = 1; number <= GetParam().names; ++number) {
            std::array<char, 96> entry{};
            std::snprintf(entry.data(), entry.size(),
                          "%s[MR80:%02X,%02X]\r\nModel = Taken out\r\nTerminalName = OLD%u\r\n",
                          before_.empty() ? "" : "\r\n", number / 256, number % 256, number);
            before_.append(entry.data());
        }
        stored_ = testfaults::parseNames(before_);
        if (GetParam().isEdited)
            std::erase(before_, '\r');
    }

    void putNames() const {
        std::ofstream stream(machine_->nameFile(), std::ios::binary);
        stream << before_;
        ASSERT_TRUE(stream.flush());
    }

    int live(unsigned cycles) const {
        auto report = std::make_unique<CycleReport>();
        for (unsigned cycle = 0; cycle < cycles; ++cycle) {
            testfaults::runCycle(*plugin_, *report);
            if (report->status != 0)
                return 1;
        }
        return 0;
    }

    [[nodiscard]] pid_t begin() const {
        const pid_t child = fork();
        if (child == 0)
            _exit(live(GetParam().cycles));
        return child;
    }

    // How long a life takes that nobody ends.
    [[nodiscard]] Clock::duration measure() const {
        constexpr std::size_t kLives = 9;
        std::vector<Clock::duration> times;
        for (std::size_t life = 0; life < kLives; ++life) {
            putNames();
            const auto start = Clock::now();
            int status = 0;
            waitpid(begin(), &status, 0);
            times.push_back(Clock::now() - start);
            EXPECT_EQ(status, 0);
        }
        std::nth_element(times.begin(), times.begin() + kLives / 2, times.end());
        return times[kLives / 2];
    }

    // Counts what the life has left.
    void look() {
        const auto now = machine_->names();
        gone_ += now ? 0 : 1;
        empty_ += now && now->empty() ? 1 : 0;
        changed_ += now == before_ ? 0 : 1;
        const StoredNames left = testfaults::parseNames(now.value_or(""));
        for (const auto& [slot, entry] : stored_) {
            const auto found = left.find(slot);
            lost_ += found != left.end() && found->second == entry ? 0 : 1;
        }
    }

    std::optional<testsupport::EnvironmentValue> temporary_;
    std::optional<FaultMachine> machine_;
    // Never initialised in this process, so that each child knows of nothing.
    std::optional<Plugin> plugin_;
    std::string before_;
    StoredNames stored_;
    std::uint64_t gone_ = 0;
    std::uint64_t empty_ = 0;
    std::uint64_t changed_ = 0;
    std::uint64_t lost_ = 0;
};

TEST_P(KilledLives, LoseNoNameThatIsStoredAsTheProductStoresIt) {
    const std::uint64_t lives = testsupport::effort(testsupport::isSanitized() ? 5 : 20, 400);
    const double one = std::chrono::duration<double>(measure()).count();
    std::mt19937 random(20261122);
    std::uniform_real_distribution<double> moment(0, one);
    std::uint64_t over = 0;
    for (std::uint64_t life = 0; life < lives; ++life) {
        putNames();
        const pid_t child = begin();
        ASSERT_GT(child, 0);
        std::this_thread::sleep_for(std::chrono::duration<double>(moment(random)));
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        over += WIFEXITED(status) ? 1 : 0;
        look();
    }
    EXPECT_EQ(gone_, 0U);
    EXPECT_EQ(empty_, 0U);
    EXPECT_TRUE(lost_ == 0 || GetParam().isEdited) << lost_;
    EXPECT_TRUE(changed_ == 0 || !GetParam().devicesAreKnown) << "there is nothing to be written";
    // Whatever the last one left, the next one succeeds.
    EXPECT_EQ(testfaults::runInChild([&] { return live(1); }), 0);
    const std::string scene = std::string(" (") + GetParam().name + ")";
    testsupport::figure(lives, "lives that were to be ended at any moment" + scene);
    testsupport::figure(over, "of them were over by then" + scene);
    testsupport::figure(stored_.size(), "names were stored" + scene);
    testsupport::figure(gone_ + empty_, "name files were gone or empty" + scene);
    testsupport::figure(changed_, "name files had new names in them" + scene);
    testsupport::figure(lost_, "stored names lost" + scene);
}

constexpr const char* kInMemory = "/dev/shm";

INSTANTIATE_TEST_SUITE_P(Names, KilledLives,
                         testing::Values(Scene{"New4", nullptr, 4, false, 1},
                                         Scene{"New100", nullptr, 100, false, 1},
                                         Scene{"New1000", nullptr, 1000, false, 1},
                                         Scene{"New5000", nullptr, 5000, false, 1},
                                         Scene{"Known4", nullptr, 0, true, 1},
                                         Scene{"Known100", nullptr, 96, true, 1},
                                         Scene{"Known1000", nullptr, 996, true, 1},
                                         Scene{"Known5000", nullptr, 4996, true, 1},
                                         Scene{"New4InMemory", kInMemory, 4, false, 1},
                                         Scene{"New100InMemory", kInMemory, 100, false, 1},
                                         Scene{"New1000InMemory", kInMemory, 1000, false, 1},
                                         Scene{"New5000InMemory", kInMemory, 5000, false, 1},
                                         Scene{"Known4InMemory", kInMemory, 0, true, 1},
                                         Scene{"Known100InMemory", kInMemory, 96, true, 1},
                                         Scene{"Known1000InMemory", kInMemory, 996, true, 1},
                                         Scene{"Known5000InMemory", kInMemory, 4996, true, 1},
                                         Scene{"Edited1000", nullptr, 1000, false, 1, true},
                                         Scene{"Edited5000", nullptr, 5000, false, 1, true},
                                         Scene{"New100InALoop", nullptr, 100, false, 20},
                                         Scene{"Known100InALoop", nullptr, 96, true, 20},
                                         Scene{"New100InALoopInMemory", kInMemory, 100, false, 20},
                                         Scene{"Known100InALoopInMemory", kInMemory, 96, true, 20}),
                         [](const auto& scene) { return scene.param.name; });

} // namespace
