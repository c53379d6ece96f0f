// Sixteen processes that initialise again and again on one state folder, each with buses of its
// own, while a seventeenth, the test, kills some of them.
//
// The name file is saved in place, but what is in it is not touched by new names, which are written
// behind it: no stored name is ever lost or given a second time. A victim is stopped before it is
// killed, and the kernel says whether it holds the lock: most of those that are killed do.
#include "tests/hostile/neighbour.h"
#include "tests/plugin/pluginCopy.h"
#include "tests/support/busBuilder.h"
#include "tests/support/effort.h"
#include "tests/support/fileText.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using testhostile::kBuses;
using testplugin::SampleMachine;
using testsupport::BusBuilder;

constexpr unsigned kProcesses = 16;
constexpr unsigned kBoxes = 2; // on each bus

using Names = std::map<std::string, std::string>; // by slot path

// The names of the sections that are whole: what a save has written in part ends with the piece of
// a section.
Names storedNames(const std::string& text) {
    Names names;
    std::istringstream lines(text);
    std::string section;
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line.back() != '\r')
            break;
        line.pop_back();
        const std::string key = "TerminalName = ";
        if (line.starts_with("["))
            section = line.substr(1, line.size() - 2);
        else if (line.starts_with(key))
            names[section] = line.substr(key.size());
    }
    return names;
}

// A bus whose boxes stand in slots that no other bus has.
BusBuilder machineOf(unsigned process, unsigned bus, std::vector<std::string>& slots) {
    BusBuilder machine;
    std::vector<BusBuilder::Node> anchors;
    for (unsigned box = 0; box < kBoxes; ++box) {
        const auto root =
            machine.rootPort(0, 1 + process, bus * kBoxes + box, {0x8086, 0x3420, 0, 0}, 1);
        anchors.push_back(machine.bridge(root, 0, 0, {0x104C, 0x8232, 0, 0}, 1));
        for (unsigned port = 0; port < 3; ++port)
            machine.bridge(anchors.back(), port, 0, {0x104C, 0x8233, 0, 0}, 1);
    }
    for (const auto& anchor : anchors)
        slots.push_back(machine.slotPath(anchor));
    return machine;
}

// One of the sixteen, started again after each kill until its cycles are done.
class Neighbour {
public:
    Neighbour(unsigned number, const fs::path& folder)
        : buses_(folder / ("bus" + std::to_string(number) + "_")),
          journal_(folder / ("journal" + std::to_string(number))) {
        for (unsigned bus = 0; bus < kBuses; ++bus) {
            slots_.emplace_back();
            std::ofstream(buses_.string() + std::to_string(bus), std::ios::binary)
                << machineOf(number, bus, slots_.back()).dump();
        }
    }

    void start(unsigned long end) {
        std::vector<std::string> words{NEIGHBOUR_FILE,           ZOTAVPCI_FILE,
                                       buses_.string(),          journal_.string(),
                                       std::to_string(cycles()), std::to_string(end)};
        std::vector<char*> pointers;
        for (std::string& word : words)
            pointers.push_back(word.data());
        pointers.push_back(nullptr);
        ASSERT_EQ(posix_spawn(&process, pointers[0], nullptr, nullptr, pointers.data(), environ),
                  0);
    }

    // How many are done; takes new lines of the journal in.
    unsigned long cycles() {
        readJournal();
        return lines_.size();
    }

    struct Line {
        std::int32_t status = 0;
        Names names;
    };
    [[nodiscard]] const std::vector<Line>& lines() const { return lines_; }

    // Whether the process, which must be stopped, holds the lock of the names: the kernel tells
    // with each descriptor. Locks of other files are nothing to the names.
    [[nodiscard]] bool holdsTheLock() const {
        const fs::path folder = "/proc/" + std::to_string(process);
        for (const auto& entry : fs::directory_iterator(folder / "fdinfo")) {
            const fs::path descriptor = folder / "fd" / entry.path().filename();
            if (testsupport::fileTextIfAny(entry.path()).find("lock:") != std::string::npos &&
                fs::read_symlink(descriptor).filename() == "zotavpci.loc")
                return true;
        }
        return false;
    }

    pid_t process = -1; // -1 while there is none

private:
    void readJournal() {
        std::ifstream stream(journal_);
        stream.seekg(taken_);
        for (std::string text; std::getline(stream, text) && !stream.eof();
             taken_ = stream.tellg()) {
            std::istringstream words(text);
            unsigned long cycle = 0;
            Line line;
            words >> cycle >> line.status;
            EXPECT_EQ(cycle, lines_.size());
            const std::vector<std::string> given{std::istream_iterator<std::string>(words), {}};
            const std::vector<std::string>& slots = slots_[cycle % kBuses];
            EXPECT_EQ(given.size(), slots.size()) << text;
            for (std::size_t i = 0; i < std::min(given.size(), slots.size()); ++i)
                line.names[slots[i]] = given[i];
            lines_.push_back(line);
        }
    }

    fs::path buses_;
    fs::path journal_;
    std::vector<std::vector<std::string>> slots_; // by bus
    std::vector<Line> lines_;
    std::streamoff taken_ = 0;
};

class Neighbours : public testing::Test {
protected:
    Neighbours() {
        for (unsigned i = 0; i < kProcesses; ++i)
            neighbours_.emplace_back(i, folder_.path());
    }

    // Runs all of them to their end, and kills one now and then.
    void runAll(unsigned long cycles, std::uint64_t kills) {
        for (Neighbour& neighbour : neighbours_)
            neighbour.start(cycles);
        while (!allHaveEnded(cycles)) {
            if (kills_ < kills)
                killOne(cycles);
            std::this_thread::sleep_for(std::chrono::microseconds(random_() % 2000));
        }
    }

    // Collects those that have ended by themselves.
    bool allHaveEnded(unsigned long cycles) {
        bool all = true;
        for (Neighbour& neighbour : neighbours_) {
            int status = 0;
            if (neighbour.process > 0 && waitpid(neighbour.process, &status, WNOHANG) > 0) {
                EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
                EXPECT_EQ(neighbour.cycles(), cycles);
                neighbour.process = -1;
            }
            all = all && neighbour.process < 0;
        }
        return all;
    }

    void killOne(unsigned long cycles) {
        Neighbour& victim = neighbours_[random_() % kProcesses];
        if (victim.process < 0 || kill(victim.process, SIGSTOP) != 0)
            return;
        int status = 0;
        waitpid(victim.process, &status, WUNTRACED);
        if (!WIFSTOPPED(status)) { // it has ended just before
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
            victim.process = -1;
            return;
        }
        const bool holds = victim.holdsTheLock();
        // Kills that cost nothing are soon made; most are to fall where it matters.
        if (!holds && random_() % 4 != 0) {
            kill(victim.process, SIGCONT);
            return;
        }
        if (holds)
            checkStored();
        kill(victim.process, SIGKILL);
        waitpid(victim.process, &status, 0);
        ++kills_;
        killsOfHolders_ += holds ? 1 : 0;
        victim.process = -1;
        if (victim.cycles() < cycles)
            victim.start(cycles);
    }

    // All names that initialises have given, which are those that are stored. None is given to two
    // slots, nor does a slot get another.
    Names given() {
        Names names;
        std::map<std::string, std::string> slots;
        for (Neighbour& neighbour : neighbours_) {
            neighbour.cycles();
            for (const Neighbour::Line& line : neighbour.lines()) {
                for (const auto& [slot, name] : line.names) {
                    const auto [known, isNew] = names.emplace(slot, name);
                    EXPECT_EQ(known->second, name) << slot;
                    const auto [holder, isFirst] = slots.emplace(name, slot);
                    EXPECT_EQ(holder->second, slot) << name << " is given twice";
                }
            }
        }
        return names;
    }

    static void expectUnique(const Names& stored) {
        std::set<std::string> names;
        for (const auto& [slot, name] : stored)
            EXPECT_TRUE(names.insert(name).second) << name << " is stored twice";
    }

    // While the victim holds the lock and is stopped, nobody changes the file.
    void checkStored() {
        const Names stored = storedNames(testsupport::fileTextIfAny(nameFile()));
        expectUnique(stored);
        for (const auto& [slot, name] : given()) {
            const auto found = stored.find(slot);
            if (found == stored.end())
                ++lost_;
            else
                EXPECT_EQ(found->second, name) << slot;
        }
    }

    [[nodiscard]] fs::path nameFile() const { return machine_.state() / "zotavpci.ini"; }

    SampleMachine machine_;
    testsupport::TemporaryFolder folder_;
    std::vector<Neighbour> neighbours_;
    std::mt19937 random_{12345};
    std::uint64_t kills_ = 0;
    std::uint64_t killsOfHolders_ = 0;
    std::uint64_t lost_ = 0;
};

TEST_F(Neighbours, KeepTheirNamesWhileSomeAreKilled) {
    const auto cycles = static_cast<unsigned long>(testsupport::effort(30, 200));
    const std::uint64_t kills = testsupport::effort(40, 1'000);
    runAll(cycles, kills);
    if (HasFailure())
        return;
    // Once more in peace, so that every slot has its name again.
    runAll(cycles + kBuses, 0);

    const Names stored = storedNames(testsupport::fileTextIfAny(nameFile()));
    EXPECT_EQ(stored.size(), kProcesses * kBuses * kBoxes);
    expectUnique(stored);
    for (const auto& [slot, name] : given())
        EXPECT_EQ(stored.at(slot), name) << slot;
    std::uint64_t initialises = 0;
    for (const Neighbour& neighbour : neighbours_) {
        for (const Neighbour::Line& line : neighbour.lines()) {
            EXPECT_EQ(line.status, 0);
            ++initialises;
        }
    }
    EXPECT_EQ(initialises, kProcesses * (cycles + kBuses));
    EXPECT_GT(killsOfHolders_, 0U);
    EXPECT_EQ(lost_, 0U);

    testsupport::figure(kProcesses, "processes on one state folder");
    testsupport::figure(initialises, "initialises of them");
    testsupport::figure(kills_, "of them killed");
    testsupport::figure(killsOfHolders_, "of those while holding the lock");
    testsupport::figure(given().size(), "names given");
    testsupport::figure(lost_, "of them lost, or given twice");
}

} // namespace
