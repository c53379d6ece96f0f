// The tree of devices, told from recorded buses.
#include "machine/busTree.h"

#include "tests/support/machines.h"
#include "tests/support/temporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

using platform::DeviceNode;
using platform::DeviceTree;
using testing::ElementsAre;

constexpr DeviceNode kPoison = 0xDEADBEEF;

// The machine of the bus tests as a folder that stands for /sys; a test says which root bridges the
// firmware describes.
class Tree : public testing::Test {
protected:
    void SetUp() override {
        machine_.bus.writeSysfs(root());
        for (const char* bus : {"00", "40"})
            std::filesystem::remove_all(firmware(bus));
        location_ = root().string();
    }

    [[nodiscard]] std::filesystem::path root() const { return folder_.path() / "sys"; }
    [[nodiscard]] std::filesystem::path firmware(const std::string& bus) const {
        return root() / "devices" / ("pci0000:" + bus) / "firmware_node";
    }
    void describe(const std::string& bus, const std::string& content) {
        std::filesystem::create_directories(firmware(bus));
        std::ofstream(firmware(bus) / "hid") << content;
    }
    void build() {
        ASSERT_EQ(machine::readMachineBus(location_, bus_), platform::kNoSystemError);
        tree_ = std::make_unique<machine::BusTree>(bus_);
    }

    [[nodiscard]] DeviceNode at(const std::string& identifier) const {
        DeviceNode node = kPoison;
        EXPECT_TRUE(tree_->open(identifier.c_str(), node)) << identifier;
        return node;
    }
    [[nodiscard]] std::string name(DeviceNode node) const {
        char text[200] = {};
        EXPECT_TRUE(tree_->identifier(node, text, sizeof text));
        return text;
    }
    [[nodiscard]] std::string enumerator(const std::string& identifier) const {
        char text[16] = {};
        EXPECT_TRUE(tree_->enumeratorName(at(identifier), text, sizeof text));
        return text;
    }
    // "none" for a query that fails and leaves its output alone, as it must.
    using Query = bool (DeviceTree::*)(DeviceNode, DeviceNode&);
    [[nodiscard]] std::string ask(Query query, const std::string& identifier) const {
        DeviceNode node = kPoison;
        if ((tree_.get()->*query)(at(identifier), node))
            return name(node);
        EXPECT_EQ(node, kPoison);
        return "none";
    }
    [[nodiscard]] std::string parent(const std::string& identifier) const {
        return ask(&DeviceTree::parent, identifier);
    }
    [[nodiscard]] std::vector<std::string> children(const std::string& identifier) const {
        std::vector<std::string> names;
        for (std::string child = ask(&DeviceTree::firstChild, identifier); child != "none";
             child = ask(&DeviceTree::nextSibling, child))
            names.push_back(child);
        return names;
    }

    testsupport::TemporaryFolder folder_;
    testsupport::machines::Switch machine_;
    std::string location_;
    std::shared_ptr<const machine::MachineBus> bus_;
    std::unique_ptr<DeviceTree> tree_;
};

TEST_F(Tree, RootBridgesAreWhatTheFirmwareCallsThem) {
    describe("00", "PNP0A08\n");
    describe("40", "PNP0A03\n");
    build();
    EXPECT_THAT(children("MACHINE\\0"), ElementsAre("ACPI\\PNP0A08\\00", "ACPI\\PNP0A03\\40"));
    EXPECT_EQ(enumerator("ACPI\\PNP0A08\\00"), "ACPI");
    EXPECT_EQ(parent("ACPI\\PNP0A03\\40"), "MACHINE\\0");
    EXPECT_EQ(parent("MACHINE\\0"), "none");
    EXPECT_EQ(ask(&DeviceTree::nextSibling, "MACHINE\\0"), "none");
    EXPECT_EQ(enumerator("MACHINE\\0"), "MACHINE");
}

TEST_F(Tree, RootBridgesWithoutADescriptionHaveAnotherEnumerator) {
    describe("40", "");
    build();
    EXPECT_THAT(children("MACHINE\\0"), ElementsAre("BUS\\PCI\\00", "BUS\\PCI\\40"));
    EXPECT_EQ(enumerator("BUS\\PCI\\40"), "BUS");
}

TEST_F(Tree, RootBridgesWithoutFunctionsAreThereToo) {
    describe("20", "PNP0A08\n");
    describe("02", "PNP0A08\n"); // bus 2 is below a bridge
    build();
    EXPECT_THAT(children("MACHINE\\0"),
                ElementsAre("BUS\\PCI\\00", "ACPI\\PNP0A08\\20", "BUS\\PCI\\40"));
    EXPECT_THAT(children("ACPI\\PNP0A08\\20"), ElementsAre());
}

TEST_F(Tree, DumpSaysNothingOfFirmware) {
    location_ = folder_.file("machine.dump", machine_.bus.dump()).string();
    build();
    EXPECT_THAT(children("MACHINE\\0"), ElementsAre("BUS\\PCI\\00", "BUS\\PCI\\40"));
    EXPECT_THAT(children("BUS\\PCI\\40"), ElementsAre("PCI\\0000:40:03.1"));
}

TEST_F(Tree, FunctionsHangBelowTheirBridges) {
    build();
    EXPECT_THAT(children("BUS\\PCI\\00"),
                ElementsAre("PCI\\0000:00:00.0", "PCI\\0000:00:1c.0", "PCI\\0000:00:1e.0"));
    EXPECT_THAT(children("PCI\\0000:00:00.0"), ElementsAre());
    EXPECT_THAT(children("PCI\\0000:00:1c.0"), ElementsAre("PCI\\0000:01:00.0"));
    EXPECT_THAT(children("PCI\\0000:01:00.0"),
                ElementsAre("PCI\\0000:02:01.0", "PCI\\0000:02:02.0"));
    EXPECT_THAT(children("PCI\\0000:02:01.0"),
                ElementsAre("PCI\\0000:03:00.0", "PCI\\0000:03:00.1"));
    EXPECT_THAT(children("PCI\\0000:02:02.0"), ElementsAre());
    EXPECT_EQ(parent("PCI\\0000:03:00.1"), "PCI\\0000:02:01.0");
    EXPECT_EQ(parent("PCI\\0000:01:00.0"), "PCI\\0000:00:1c.0");
    EXPECT_EQ(parent("PCI\\0000:00:1c.0"), "BUS\\PCI\\00");
    EXPECT_EQ(enumerator("PCI\\0000:03:00.1"), "PCI");
}

TEST_F(Tree, OfTwoBridgesWithOneBusTheParentAloneHasChildren) {
    machine_.bus.setSecondaryBus(machine_.downB, 3);
    location_ = folder_.file("machine.dump", machine_.bus.dump()).string();
    build();
    EXPECT_THAT(children("PCI\\0000:02:01.0"),
                ElementsAre("PCI\\0000:03:00.0", "PCI\\0000:03:00.1"));
    EXPECT_THAT(children("PCI\\0000:02:02.0"), ElementsAre());
}

TEST_F(Tree, BridgeThatIsNotConfiguredHasNoChildren) {
    machine_.bus.setSecondaryBus(machine_.downB, 0);
    location_ = folder_.file("machine.dump", machine_.bus.dump()).string();
    build();
    EXPECT_THAT(children("PCI\\0000:02:02.0"), ElementsAre());
}

TEST_F(Tree, AddressIsDeviceAndFunction) {
    build();
    std::uint32_t value = 0xAAAAAAAA;
    EXPECT_TRUE(tree_->address(at("PCI\\0000:41:1f.7"), value));
    EXPECT_EQ(value, 0x001F0007U);
    value = 0xAAAAAAAA;
    EXPECT_FALSE(tree_->address(at("BUS\\PCI\\00"), value));
    EXPECT_FALSE(tree_->address(at("MACHINE\\0"), value));
    EXPECT_EQ(value, 0xAAAAAAAAU);
}

TEST_F(Tree, TextsThatDoNotFitFailAndLeaveTheBuffer) {
    build();
    const DeviceNode node = at("PCI\\0000:00:1c.0");
    const std::string whole = "PCI\\0000:00:1c.0";
    for (std::size_t capacity = 0; capacity <= whole.size() + 1; ++capacity) {
        std::string buffer(20, '?');
        const bool fits = capacity > whole.size();
        EXPECT_EQ(tree_->identifier(node, buffer.data(), capacity), fits) << capacity;
        EXPECT_EQ(buffer, fits ? whole + '\0' + std::string(20 - whole.size() - 1, '?')
                               : std::string(20, '?'));
    }
    std::string buffer(4, '?');
    EXPECT_FALSE(tree_->enumeratorName(node, buffer.data(), 3));
    EXPECT_EQ(buffer, "????");
    EXPECT_TRUE(tree_->enumeratorName(node, buffer.data(), 4));
    EXPECT_EQ(buffer, std::string("PCI\0", 4));
}

TEST_F(Tree, OpensNothingByOtherIdentifiers) {
    build();
    for (const char* identifier :
         {"", "PCI\\0000:05:00.0", "PCI\\0000:41:1f.6", "PCI\\0000:40:03.9", "PCI\\0000:00:1C.0",
          "PCI\\0000:00:1c.0x", "PCI\\0000:0:1c.0", "PCI\\0001:00:1c.0", "PCI\\0000:00:3c.0",
          "PCI\\0000:00:1c.8", "BUS\\PCI\\01", "ACPI\\PNP0A08\\00", "MACHINE"}) {
        DeviceNode node = kPoison;
        EXPECT_FALSE(tree_->open(identifier, node)) << identifier;
        EXPECT_EQ(node, kPoison);
    }
}

TEST_F(Tree, UnknownNodesAnswerNothing) {
    build();
    for (const DeviceNode node : {DeviceNode{0x0500}, DeviceNode{0x10001}, DeviceNode{0x10200},
                                  DeviceNode{0x100000000}, ~DeviceNode{0}}) {
        DeviceNode result = kPoison;
        std::uint32_t value = 7;
        char text[20] = "?";
        EXPECT_FALSE(tree_->parent(node, result));
        EXPECT_FALSE(tree_->firstChild(node, result));
        EXPECT_FALSE(tree_->nextSibling(node, result));
        EXPECT_FALSE(tree_->address(node, value));
        EXPECT_FALSE(tree_->identifier(node, text, sizeof text));
        EXPECT_FALSE(tree_->enumeratorName(node, text, sizeof text));
        EXPECT_EQ(result, kPoison);
        EXPECT_EQ(value, 7U);
        EXPECT_STREQ(text, "?");
    }
}

TEST_F(Tree, FunctionsHaveTheNodesThatTheirIdentifiersOpen) {
    build();
    ASSERT_EQ(bus_->bus.functions().size(), 10U);
    for (const pcibus::PciFunction& function : bus_->bus.functions())
        EXPECT_EQ(machine::BusTree::nodeOf(function),
                  at("PCI\\0000:" + pcibus::addressText(function)));
}

TEST_F(Tree, BusThatCannotBeReadHasNothing) {
    EXPECT_EQ(machine::readMachineBus((folder_.path() / "missing").string(), bus_),
              static_cast<platform::SystemCode>(ENOENT));
    ASSERT_EQ(bus_, nullptr);
    machine::BusTree tree(bus_);
    DeviceNode node = kPoison;
    EXPECT_FALSE(tree.open("MACHINE\\0", node));
    EXPECT_FALSE(tree.open("PCI\\0000:00:00.0", node));
    EXPECT_FALSE(tree.firstChild(0x10100, node));
    EXPECT_EQ(node, kPoison);
}

TEST_F(Tree, EmptyBusHasTheMachineAlone) {
    location_ = folder_.file("empty.dump", "").string();
    build();
    EXPECT_THAT(children("MACHINE\\0"), ElementsAre());
}

} // namespace
