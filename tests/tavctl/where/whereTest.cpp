// Where something is, as people ask.
#include "tavctl/where/systemNames.h"
#include "tests/support/fileFolder.h"
#include "tests/support/machines.h"
#include "tests/tavctl/runTavctl.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using namespace tavctl;
using namespace tavctltest;
using testing::ElementsAre;
using testing::HasSubstr;

const std::string kOfSample = kDump + kDescriptions + "--pci-ids /dev/null ";

TEST(Where, TellsEveryConnectorOnTheWay) {
    EXPECT_TRUE(says(runTavctl("where 06:00.0 " + kOfSample), 0,
                     "TAV1* connector 2 > TAVCard1* connector LEFT > 06:00.0 Device 10ec:8139\n"));
    EXPECT_TRUE(says(runTavctl("where 0000:44:00.0 " + kOfSample), 0,
                     "TAV3* connectors B1 B2 > 44:00.0 Device 1af4:1044\n"));
    EXPECT_TRUE(says(runTavctl("where TAVCard1 " + kOfSample), 0,
                     "TAV1* connector 2 > 04:00.0 Device 1b36:000e (TAVCard1*: TAV-C1 Adapter "
                     "Card)\n"));
    EXPECT_TRUE(says(runTavctl("where 02:01.0 " + kOfSample), 0,
                     "02:01.0 Device 104c:8233 (the port of TAV1* connector 2)\n"));
}

TEST(Where, ListsWhatIsBehindAConnector) {
    EXPECT_TRUE(says(runTavctl("where TAV1:2 " + kOfSample), 0,
                     "TAV1* connector 2 > 04:00.0 Device 1b36:000e (TAVCard1*: TAV-C1 Adapter "
                     "Card)\n"
                     "TAV1* connector 2 > 05:01.0 Device 1b36:0002 (the anchor of TAVCard1*)\n"
                     "TAV1* connector 2 > TAVCard1* connector LEFT > 06:00.0 Device 10ec:8139\n"));
    EXPECT_TRUE(
        says(runTavctl("where TAV1:3 " + kOfSample), 0, "tavctl: nothing is behind TAV1:3\n"));
    EXPECT_TRUE(says(runTavctl("where TAV1:9 " + kOfSample), 1,
                     "find connector (9): TAV1 has no such connector; it has 1, 2, 3\n"));
}

TEST(Where, WhatIsBehindNoConnectorIsToldWithExitStatusOne) {
    EXPECT_TRUE(says(runTavctl("where 00:1f.2 " + kOfSample), 1,
                     "00:1f.2 Device 8086:2922\n"
                     "tavctl: it is behind no connector of a described device\n"));
    EXPECT_TRUE(says(runTavctl("where eth0 " + kOfSample), 1,
                     "find (eth0): nothing on this bus has this address or name, and of a "
                     "recording the system's names are not known\n"));
    EXPECT_TRUE(says(runTavctl("where 7f:00.0 " + kOfSample), 1,
                     "find function (7f:00.0): there is no function at this address\n"));
}

TEST(Where, JsonHasTheWayStepByStep) {
    EXPECT_THAT(
        outputOf("where 06:00.0 --json " + kOfSample),
        HasSubstr(R"("what":"06:00.0","takenFor":"address","found":[{"address":"0000:06:00.0",)"
                  R"("vendorName":null,"deviceName":null,"way":[{"name":"TAV1",)"
                  R"("model":"TAV-B3 Switch Box","labels":["2"],"portAddress":"0000:02:01.0"},)"
                  R"({"name":"TAVCard1","model":"TAV-C1 Adapter Card","labels":["LEFT"],)"
                  R"("portAddress":"0000:05:02.0"}],"marks":[],"systemNames":[]}]})"));
}

// A machine with a switch that is copied as a folder, in which a card drives two things.
struct NamedMachine {
    testsupport::machines::Switch machine;
    testsupport::FileFolder folder;
    fs::path sys = folder.file("sys");

    NamedMachine() {
        machine.bus.writeSysfs(sys);
        const fs::path card =
            fs::canonical(sys / "bus/pci/devices" / ("0000:" + machine.bus.address(machine.card)));
        add(card / "net/eth2", "net/eth2");
        add(card / "host3/target3:0:0/3:0:0:0/block/sd!x", "block/sd!x");
        add(card / "host3/target3:0:0/3:0:0:0/block/sd!x/sdx1", "block/sdx1");
        std::ofstream(card / "host3/target3:0:0/3:0:0:0/block/sd!x/sdx1/partition") << "1\n";
        add(sys / "devices/virtual/net/lo", "net/lo");
    }

    void add(const fs::path& device, const std::string& name) const {
        fs::create_directories(device);
        fs::create_directories((sys / "class" / name).parent_path());
        fs::create_directory_symlink(device, sys / "class" / name);
    }

    [[nodiscard]] std::vector<std::uint32_t> found(const std::string& name) const {
        std::vector<std::uint32_t> handles;
        for (const DomainAddress& address : SystemNames(sys).find(name))
            handles.push_back(address.handle);
        return handles;
    }
};

TEST(SystemNames, LeadToTheFunctionThatDrivesThem) {
    const NamedMachine named;
    const std::uint32_t card = named.machine.bus.handle(named.machine.card);
    for (const std::string& name :
         {std::string("eth2"), std::string("sd/x"), std::string("/dev/sd/x"), std::string("sdx1"),
          (named.sys / "class/net/eth2").string(),
          (named.sys / "bus/pci/devices" /
           ("0000:" + named.machine.bus.address(named.machine.card)) / "host3")
              .string()})
        EXPECT_THAT(named.found(name), ElementsAre(card)) << name;
    for (const char* name : {"lo", "eth", "/dev/eth3", "/nowhere/at/all"})
        EXPECT_THAT(named.found(name), ElementsAre()) << name;
}

// Two controllers lead to the disk, which is below neither of them.
TEST(SystemNames, OfADiskWithSeveralWaysAreThoseOfEveryWay) {
    const NamedMachine named;
    const fs::path group = named.sys / "devices/virtual/nvme-subsystem/nvme-subsys1";
    std::vector<std::uint32_t> controllers;
    for (const auto& node : {named.machine.card, named.machine.second}) {
        const std::string name = "nvme" + std::to_string(controllers.size() + 1);
        const fs::path controller = fs::canonical(named.sys / "bus/pci/devices" /
                                                  ("0000:" + named.machine.bus.address(node))) /
                                    "nvme" / name;
        named.add(controller, "nvme/" + name);
        named.add(controller / (name + "c1n1"), "block/" + name + "c1n1");
        std::ofstream(controller / (name + "c1n1") / "hidden") << "1\n";
        fs::create_directories(group);
        fs::create_directory_symlink(controller, group / name);
        controllers.push_back(named.machine.bus.handle(node));
    }
    named.add(group / "nvme1n1", "block/nvme1n1");
    named.add(group / "nvme1n1/nvme1n1p1", "block/nvme1n1p1");
    fs::create_directory_symlink(named.sys / "class", group / "subsystem");
    for (const std::string& name : {std::string("nvme1n1"), std::string("/dev/nvme1n1p1"),
                                    (named.sys / "class/block/nvme1n1").string()})
        EXPECT_EQ(named.found(name), controllers) << name;
    const auto names = SystemNames(named.sys).of({0, controllers.back()});
    for (const char* expected : {"nvme1n1", "nvme2c1n1"}) {
        const auto found = std::find_if(names.begin(), names.end(), [&](const SystemName& name) {
            return name.name == expected;
        });
        ASSERT_NE(found, names.end()) << expected;
        EXPECT_EQ(found->isPart, expected == std::string("nvme2c1n1"));
    }
}

TEST(SystemNames, AreThoseOfAFunction) {
    const NamedMachine named;
    std::vector<std::string> names;
    for (const SystemName& name :
         SystemNames(named.sys).of({0, named.machine.bus.handle(named.machine.card)}))
        names.push_back(name.kind + " " + name.name + (name.isPart ? " part" : ""));
    EXPECT_THAT(names, testing::UnorderedElementsAre("net eth2", "block sd/x", "block sdx1 part"));
    EXPECT_THAT(SystemNames().of({0, 0}), ElementsAre());
    EXPECT_FALSE(SystemNames().areKnown());
}

TEST(Where, NamesOfTheSystemAreToldAndTaken) {
    const NamedMachine named;
    const std::string options =
        " --dump " + named.sys.string() + " " + kDescriptions + "--pci-ids /dev/null";
    const auto result = runTavctl("where eth2" + options);
    EXPECT_THAT(result.output, HasSubstr(named.machine.bus.address(named.machine.card)));
    EXPECT_THAT(result.output, HasSubstr("(sd/x, eth2)"));
    EXPECT_EQ(result.exitStatus, 1) << "no description is for this switch";
    EXPECT_TRUE(says(runTavctl("where eth3" + options), 1, "did you mean \"eth2\"?"));
}

} // namespace
