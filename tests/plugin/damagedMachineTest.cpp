// One damaged function does not take a machine's devices with it.
#include "tests/plugin/pluginCopy.h"
#include "tests/support/busBuilder.h"
#include "tests/support/environmentValue.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>

namespace {

namespace fs = std::filesystem;
using testplugin::PluginCopy;
using testplugin::SampleMachine;
using testsupport::BusBuilder;

// Two of the sample's switch boxes, and a card that nobody describes.
class DamagedMachine : public testing::Test {
protected:
    DamagedMachine() {
        for (const unsigned slot : {4U, 5U}) {
            const auto root = machine.rootPort(0, slot, 0, {0x8086, 0x3420, 0x8086, 0});
            const auto up = machine.bridge(root, 0, 0, {0x104C, 0x8232, 0, 0}, 1, 1);
            for (unsigned port = 0; port < 3; ++port)
                machine.bridge(up, port, 0, {0x104C, 0x8233, 0, 0}, 1, 1);
            if (slot == 5)
                upstream = up;
        }
        card = machine.rootEndpoint(0, 0x1F, 3, {0x8086, 0x2930, 0x1AF4, 0x1100});
    }

    // How many devices the plug-in lists of a bus.
    static std::int64_t devicesOf(const fs::path& bus) {
        const testsupport::EnvironmentValue variable("TAV_PCI_DUMP", bus.string());
        const PluginCopy plugin;
        EXPECT_EQ(plugin.initialize(), 0);
        return plugin.countOrStatus();
    }
    // The same of a copy of /sys, in which the configuration of one function is spoilt.
    std::int64_t devicesWithout(BusBuilder::Node node,
                                const std::function<void(const fs::path&)>& spoil) const {
        const testsupport::TemporaryFolder folder;
        machine.writeSysfs(folder.path());
        const fs::path function =
            fs::canonical(folder.path() / "bus/pci/devices" / ("0000:" + machine.address(node)));
        spoil(function / "config");
        return devicesOf(folder.path());
    }

    SampleMachine surroundings;
    BusBuilder machine;
    BusBuilder::Node upstream;
    BusBuilder::Node card;
};

TEST_F(DamagedMachine, ListsTheRestWhereOneFunctionReadsFF) {
    const testsupport::TemporaryFolder folder;
    EXPECT_EQ(devicesOf(folder.file("whole.dump", machine.dump())), 2);
    BusBuilder deadCard = machine;
    deadCard.poke(card, 0, {0xFF, 0xFF});
    EXPECT_EQ(devicesOf(folder.file("card.dump", deadCard.dump())), 2);
    BusBuilder deadBox = machine;
    deadBox.poke(upstream, 0, {0xFF, 0xFF});
    EXPECT_EQ(devicesOf(folder.file("box.dump", deadBox.dump())), 1);
}

TEST_F(DamagedMachine, ListsTheRestWhereCapabilitiesFormALoop) {
    const testsupport::TemporaryFolder folder;
    for (const BusBuilder::Node node : {card, upstream}) {
        BusBuilder looped = machine;
        const std::uint8_t first = machine.configSpace(node).at(0x34);
        ASSERT_NE(first, 0);
        looped.poke(node, first + 1U, {first});
        EXPECT_EQ(devicesOf(folder.file("loop.dump", looped.dump())), 2);
    }
}

TEST_F(DamagedMachine, ListsTheRestOfASysWhereOneConfigurationIsDamaged) {
    const auto remove = [](const fs::path& config) { fs::remove(config); };
    const auto empty = [](const fs::path& config) { fs::resize_file(config, 0); };
    const auto shorten = [](const fs::path& config) { fs::resize_file(config, 63); };
    const auto makeUnreadable = [](const fs::path& config) {
        fs::remove(config);
        fs::create_directory(config);
    };
    const auto kill = [](const fs::path& config) {
        std::ofstream(config, std::ios::binary) << std::string(64, '\xFF');
    };
    EXPECT_EQ(devicesWithout(card, [](const fs::path&) {}), 2);
    for (const auto& spoil : std::initializer_list<std::function<void(const fs::path&)>>{
             remove, empty, shorten, makeUnreadable, kill}) {
        EXPECT_EQ(devicesWithout(card, spoil), 2);
        EXPECT_EQ(devicesWithout(upstream, spoil), 1);
    }
}

} // namespace
