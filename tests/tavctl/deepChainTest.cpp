// The deepest bus that there can be, bridge below bridge, where a shell leaves a program little
// stack: `ulimit -s 64`.
#include "tests/support/busBuilder.h"
#include "tests/support/fileFolder.h"
#include "tests/tavctl/runTavctl.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <ostream>

namespace {

namespace fs = std::filesystem;
using testsupport::BusBuilder;

// A box of two bridges; the next one is in its connector.
constexpr const char* kChainBox = "[UpstreamTAV]\n"
                                  "Model = Link of a Chain\n"
                                  "DeviceCategory = SwitchboxTav\n"
                                  "InternalBridges = \"\"\n"
                                  "ConnectorLabels = HOST,1\n"
                                  "DownstreamPorts = 1\n"
                                  "HasUpstreamPort = 1\n"
                                  "[Anchor]\n"
                                  "PciHeaderType = 1\n"
                                  "Vid = 10B5\n"
                                  "Pid = 8609\n"
                                  "SsVid = 1234\n"
                                  "SsPid = 1\n"
                                  "[UpstreamPort]\n"
                                  "IDsSameAs = Anchor\n"
                                  "TraversalMapFromAnchor = \"\"\n"
                                  "[DownstreamPort1]\n"
                                  "Vid = 10B5\n"
                                  "Pid = 8609\n"
                                  "SsVid = 1234\n"
                                  "SsPid = 2\n"
                                  "TraversalMapFromAnchor = d1f0\n";

// A root port, 124 boxes in each other, one bridge more, and a card behind that.
struct DeepChain {
    static constexpr unsigned kBoxes = 124;
    testsupport::FileFolder folder;
    BusBuilder bus;
    std::string card; // its address

    DeepChain() {
        auto at = bus.rootPort(0, 4, 0, {0x8086, 0xA110, 0, 0});
        for (unsigned box = 0; box < kBoxes; ++box) {
            at = bus.bridge(at, 0, 0, {0x10B5, 0x8609, 0x1234, 1});
            at = bus.bridge(at, 1, 0, {0x10B5, 0x8609, 0x1234, 2});
        }
        at = bus.bridge(at, 0, 0, {0x10B5, 0x8747, 0x1234, 3});
        const auto end = bus.endpoint(at, 0, 0, {0x1172, 0xE001, 0x1234, 0x10});
        card = bus.address(end);
        folder.write("chain.dump", bus.dump());
        for (const char* kind : {"boxes", "nothing", "state"})
            fs::create_directories(fs::path(folder.file(kind)) / "PCI Hardware Descriptions");
        folder.write("boxes/PCI Hardware Descriptions/box.ini", kChainBox);
    }

    // Words in capitals stand for what a command is told of the chain.
    [[nodiscard]] testsupport::CommandResult run(const std::string& before,
                                                 std::string words) const {
        const std::pair<const char*, std::string> meanings[] = {
            {"CARD", card},
            {"BUS", "--dump " + folder.file("chain.dump")},
            {"SYS", "--dump " + folder.file("sys")},
            {"BOXES",
             "--state " + folder.file("state") + " --descriptions " + folder.file("boxes")},
            {"NOTHING",
             "--state " + folder.file("state") + " --descriptions " + folder.file("nothing")},
            {"UNNAMED", "--pci-ids /dev/null"}};
        for (const auto& [name, meaning] : meanings) {
            for (auto at = words.find(name); at != std::string::npos; at = words.find(name))
                words.replace(at, std::string(name).size(), meaning);
        }
        if (words.find("/sys") != std::string::npos && !folder.has("sys"))
            bus.writeSysfs(folder.file("sys"));
        return testsupport::runCommand(before + TAVCTL_FILE " " + words);
    }
};

struct DeepQuestion {
    const char* words;
    const char* answer; // something that only the end of the chain has
    int exitStatus = 0;

    friend std::ostream& operator<<(std::ostream& out, const DeepQuestion& question) {
        return out << question.words;
    }
};

class DeepChainCommand : public testing::TestWithParam<DeepQuestion> {};

TEST_P(DeepChainCommand, ReachesTheEndOnLittleStack) {
    const DeepChain chain;
    const auto plain = chain.run("", GetParam().words);
    EXPECT_EQ(plain.exitStatus, GetParam().exitStatus) << plain.output;
    EXPECT_THAT(plain.output, testing::HasSubstr(GetParam().answer));
    const auto small = chain.run("ulimit -s 64 && ", GetParam().words);
    EXPECT_EQ(small.exitStatus, plain.exitStatus);
    EXPECT_EQ(small.output, plain.output);
}

INSTANTIATE_TEST_SUITE_P(
    Of, DeepChainCommand,
    testing::Values(DeepQuestion{"tree UNNAMED BUS NOTHING", "1172:e001"},
                    DeepQuestion{"tree UNNAMED BUS BOXES", "1172:e001"},
                    DeepQuestion{"tree UNNAMED --json BUS NOTHING", "\"deviceId\":\"e001\""},
                    DeepQuestion{"tree UNNAMED --json BUS BOXES", "\"deviceId\":\"e001\""},
                    DeepQuestion{"tree UNNAMED CARD BUS BOXES", "1172:e001"},
                    DeepQuestion{"tree UNNAMED SYS BOXES", "1172:e001"},
                    DeepQuestion{"draw --format dot --all UNNAMED BUS NOTHING", "1172:e001"},
                    DeepQuestion{"draw --format dot --all UNNAMED BUS BOXES", "1172:e001"},
                    DeepQuestion{"draw --format dot UNNAMED BUS BOXES", "TAV124"},
                    DeepQuestion{"draw --format dot --front UNNAMED BUS BOXES", "TAV124"},
                    DeepQuestion{"where CARD UNNAMED BUS NOTHING", "1172:e001", 1},
                    DeepQuestion{"where CARD UNNAMED BUS BOXES", "1172:e001"},
                    DeepQuestion{"where TAV1:1 UNNAMED BUS BOXES", "1172:e001"},
                    DeepQuestion{"where CARD --json UNNAMED BUS BOXES", "0000:fa:00.0"},
                    DeepQuestion{"list BUS BOXES", "TAV124"},
                    DeepQuestion{"list --json BUS BOXES", "TAV124"},
                    DeepQuestion{"explain BUS BOXES", "listed 124 times"},
                    DeepQuestion{"explain f7:00.0 BUS BOXES", "listed"},
                    DeepQuestion{"names preview BUS BOXES", "TAV124"},
                    DeepQuestion{"record BUS", "fa:00.0"},
                    DeepQuestion{"describe 01:00.0 --whole BUS", "f9:00.0"}),
    [](const testing::TestParamInfo<DeepQuestion>& tested) {
        return std::to_string(tested.index);
    });

} // namespace
