// Looks again and again in one process, with the plug-in as a host has it.
#include "tavctl/monitor/looker.h"

#include "tests/support/busBuilder.h"
#include "tests/support/environmentValue.h"
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"
#include "tests/tavctl/runTavctl.h"
#include "tests/tavctl/sample.h"

#include <gmock/gmock.h>
#include <malloc.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace tavctl;
using tavctl::monitor::Looker;
using tavctltest::kSample;
using tavctltest::kSampleDescriptions;
using tavctltest::runTavctl;
using testing::ElementsAre;
using testing::IsEmpty;

class LookerTest : public testing::Test {
protected:
    LookerTest() {
        fs::create_directories(state_);
        fs::copy_file(kSample, dump_);
        options_.dump = dump_.string();
        options_.descriptions = kSampleDescriptions;
        options_.state = state_.string();
    }

    // The bus without what stands below one root port.
    void removeBuses(char first, char last) const {
        std::ofstream file(dump_, std::ios::binary);
        std::stringstream text(testsupport::fileText(kSample));
        bool isLeftOut = false;
        for (std::string line; std::getline(text, line);) {
            if (line.size() > 6 && line[2] == ':' && line[5] == '.')
                isLeftOut = line[0] == '0' && line[1] >= first && line[1] <= last;
            if (!isLeftOut)
                file << line << "\n";
        }
    }

    void restore() const { fs::copy_file(kSample, dump_, fs::copy_options::overwrite_existing); }

    static std::vector<std::string> namesOf(const MachineState& state) {
        std::vector<std::string> names;
        for (const auto& device : state.devices)
            names.push_back(device.name + (device.isStored ? "" : "*"));
        return names;
    }

    testsupport::TemporaryFolder folder_;
    fs::path state_ = folder_.path() / "state";
    fs::path dump_ = folder_.path() / "bus.dump";
    CommonOptions options_;
    // What a setup changes for this process.
    testsupport::EnvironmentValue dumpVariable_{"TAV_PCI_DUMP", std::nullopt};
    testsupport::EnvironmentValue configuration_{"TAV_MANAGER_CONF", std::nullopt};
};

TEST_F(LookerTest, ANameThatIsNotStoredStaysItsDevices) {
    Looker looker(options_, false, "/dev/null");
    EXPECT_THAT(namesOf(looker.look()), ElementsAre("TAV1*", "TAV2*", "TAVCard1*", "TAV3*"));
    removeBuses('1', '8'); // the first box, with the card in it
    EXPECT_THAT(namesOf(looker.look()), ElementsAre("TAV2*", "TAV3*"));
    EXPECT_EQ(looker.look().absent.size(), 2U);
    restore();
    EXPECT_THAT(namesOf(looker.look()), ElementsAre("TAV1*", "TAV2*", "TAVCard1*", "TAV3*"));
    EXPECT_TRUE(fs::is_empty(state_));
}

TEST_F(LookerTest, TakesUpWhatIsStoredMeanwhile) {
    Looker looker(options_, false, "/dev/null");
    const std::string mark = looker.mark();
    looker.look();
    EXPECT_EQ(looker.mark(), mark);
    ASSERT_EQ(runTavctl("list " + tavctltest::kDump + tavctltest::kDescriptions + "--state " +
                        state_.string())
                  .exitStatus,
              0);
    EXPECT_NE(looker.mark(), mark);
    EXPECT_THAT(namesOf(looker.look()), ElementsAre("TAV1", "TAV2", "TAVCard1", "TAV3"));
    ASSERT_EQ(runTavctl("names rename TAV1 TAV7 " + tavctltest::kDump + tavctltest::kDescriptions +
                        "--state " + state_.string())
                  .exitStatus,
              0);
    EXPECT_THAT(namesOf(looker.look()), ElementsAre("TAV7", "TAV2", "TAVCard1", "TAV3"));
}

// Systems remove what stays long in folders for temporary files.
TEST_F(LookerTest, DoesNotMindThatItsCopyGoes) {
    const fs::path temporary = folder_.path() / "temporary";
    fs::create_directories(temporary);
    const testsupport::EnvironmentValue variable("TMPDIR", temporary.string());
    testsupport::EnvironmentValue keep("TAV_PCI_DUMP", std::nullopt);
    Looker looker(options_, false, "/dev/null");
    looker.look();
    fs::remove_all(temporary);
    fs::create_directories(temporary);
    EXPECT_THAT(namesOf(looker.look()), ElementsAre("TAV1*", "TAV2*", "TAVCard1*", "TAV3*"));
}

TEST_F(LookerTest, StoresWhenItIsToldTo) {
    Looker looker(options_, true, "/dev/null");
    EXPECT_THAT(namesOf(looker.look()), ElementsAre("TAV1", "TAV2", "TAVCard1", "TAV3"));
    EXPECT_TRUE(fs::exists(state_ / "zotavpci.ini"));
    removeBuses('1', '8');
    const MachineState without = looker.look();
    EXPECT_THAT(namesOf(without), ElementsAre("TAV2", "TAV3"));
    EXPECT_EQ(without.absent.size(), 2U);
}

TEST_F(LookerTest, ItsMarkTellsOfTheBusAndOfTheDescriptions) {
    const fs::path descriptions = folder_.path() / "PCI Hardware Descriptions";
    fs::copy(fs::path(kSampleDescriptions) / "PCI Hardware Descriptions", descriptions);
    options_.descriptions = folder_.path().string();
    Looker looker(options_, false, "/dev/null");
    std::string mark = looker.mark();
    const auto isAnother = [&] {
        const std::string before = mark;
        mark = looker.mark();
        return mark != before;
    };
    EXPECT_FALSE(isAnother());
    removeBuses('1', '8');
    EXPECT_TRUE(isAnother());
    static_cast<void>(folder_.file("PCI Hardware Descriptions/new.ini", "; nothing\n"));
    EXPECT_TRUE(isAnother());
    std::ofstream(descriptions / "new.ini", std::ios::app) << "; more\n";
    EXPECT_TRUE(isAnother());
    fs::remove(dump_);
    EXPECT_TRUE(isAnother());
    EXPECT_FALSE(isAnother());
}

TEST_F(LookerTest, ItsMarkTellsOfAFolderThatStandsForTheSystems) {
    testsupport::BusBuilder machine;
    const auto root = machine.rootPort(0, 4, 0, {0x8086, 0x3420, 0, 0});
    machine.endpoint(root, 0, 0, {0x1172, 0xE001, 1, 2});
    const fs::path tree = folder_.path() / "sys";
    machine.writeSysfs(tree);
    options_.dump = tree.string();
    Looker looker(options_, false, "/dev/null");
    const std::string before = looker.mark();
    EXPECT_EQ(looker.mark(), before);
    const fs::path functions = tree / "bus" / "pci" / "devices";
    const fs::path config = functions / machine.address(root).insert(0, "0000:") / "config";
    fs::last_write_time(config, fs::last_write_time(config) + std::chrono::seconds(1));
    const std::string after = looker.mark();
    EXPECT_NE(after, before);
    fs::remove(functions / "0000:01:00.0");
    EXPECT_NE(looker.mark(), after);
    fs::remove_all(functions);
    EXPECT_THAT(looker.mark(), testing::StartsWith("none\n"));
}

#ifndef TAV_SANITIZED // whose memory is counted elsewhere
TEST_F(LookerTest, TakesNoMoreMemoryForHundredsOfLooks) {
    for (const bool stores : {false, true}) {
        Looker looker(options_, stores, "/dev/null");
        // In a thread of its own: what the allocator keeps for a thread, of any amount, counts as
        // taken until the thread ends.
        const auto afterLooks = [&](int count) {
            std::thread([&] {
                for (int i = 0; i < count; ++i) {
                    if (i % 2 == 0)
                        removeBuses('1', '8');
                    else
                        restore();
                    EXPECT_EQ(looker.look().devices.size(), i % 2 == 0 ? 2U : 4U);
                }
            }).join();
            return mallinfo2().uordblks;
        };
        constexpr std::size_t kMostOfALook = 4;
        const std::size_t before = afterLooks(100);
        const std::size_t after = afterLooks(300);
        EXPECT_LT(after, before + 300 * kMostOfALook);
    }
}
#endif

} // namespace
