// What tav::Device and tav::Port answer: of the sample machine, and of a plug-in that answers what
// no sample machine does.
#include "tests/plugin/pluginCopy.h"
#include "tests/support/libraryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tavHost.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

class HostAccessors : public testing::Test {
protected:
    HostAccessors() {
        testsupport::findLibrariesIn(std::filesystem::path(ZOPCIBRD_FILE).parent_path());
        EXPECT_EQ(plugin_.load(ZOTAVPCI_FILE), tav::Loading::done);
        EXPECT_EQ(plugin_.initialize(), tav::Status());
    }

    // The device of this name; the one behind the last where there is none.
    [[nodiscard]] tav::Device named(std::string_view name) const {
        for (const tav::Device device : plugin_.devices()) {
            if (device.name().value().view() == name)
                return device;
        }
        ADD_FAILURE() << "no device is called " << name;
        return plugin_.device(plugin_.deviceCount().value());
    }

    testplugin::SampleMachine machine_;
    tav::Plugin plugin_;
};

TEST_F(HostAccessors, GoThroughTheDevices) {
    std::vector<std::string> names;
    std::vector<std::uint32_t> indices;
    for (const tav::Device device : plugin_.devices()) {
        names.emplace_back(device.name().value().view());
        indices.push_back(device.index());
    }
    EXPECT_THAT(names, ElementsAre("TAV1", "TAV2", "TAVCard1", "TAV3"));
    EXPECT_THAT(indices, ElementsAre(0U, 1U, 2U, 3U));
    EXPECT_EQ(plugin_.deviceCount().value(), 4U);
    EXPECT_EQ(plugin_.devices().size(), 4U);
}

TEST_F(HostAccessors, TellWhatADeviceIs) {
    const tav::Device card = named("TAVCard1");
    EXPECT_EQ(card.model().value().view(), "TAV-C1 Adapter Card");
    EXPECT_EQ(card.category().value(), tav::Category::pci);
    EXPECT_EQ(named("TAV1").category().value(), tav::Category::switchboxTav);
    const tav::Result<tav::Address> address = named("TAV3").address();
    ASSERT_TRUE(address.ok());
    EXPECT_EQ(address.value().bus, 0x41U);
    EXPECT_EQ(address.value().device, 0U);
    EXPECT_EQ(address.value().function, 0U);
    EXPECT_EQ(card.address().value().bus, 4U);
    EXPECT_EQ(card.portCount().value(), 2U);
}

TEST_F(HostAccessors, TellWhatAPortIs) {
    const tav::Device box = named("TAV3");
    std::string labels;
    for (const tav::Port port : box.ports()) {
        labels += std::string(port.label().value().view()) + " ";
        EXPECT_EQ(port.device().index(), box.index());
    }
    EXPECT_EQ(labels, "A1 B1 B2 C1 C2 C3 C4 ");
    const tav::Port port = box.port(1);
    EXPECT_EQ(port.index(), 1U);
    EXPECT_EQ(port.secondaryBus().value(), 0x44U);
    EXPECT_EQ(port.linkWidth().value(), 8U);
    EXPECT_EQ(port.linkSpeed().value().code, 3U);
    EXPECT_EQ(port.linkSpeed().value().megatransfers(), 8000U);
    EXPECT_EQ(box.linkWidthPerLabel().value(), 4U);
}

TEST_F(HostAccessors, TellWhatADeviceDoesNotCarry) {
    const tav::Device card = named("TAVCard1");
    EXPECT_TRUE(card.linkWidthPerLabel().status().isNotSupported());
    EXPECT_TRUE(card.port(0).linkWidth().status().isNotSupported());
    EXPECT_TRUE(card.port(0).linkSpeed().status().isNotSupported());
    EXPECT_TRUE(card.port(0).secondaryBus().ok());
    EXPECT_EQ(card.linkWidthPerLabel().value(), 0U);
    EXPECT_EQ(card.linkWidthPerLabel().valueOr(7), 7U);
    EXPECT_EQ(named("TAV3").linkWidthPerLabel().valueOr(7), 4U);
    EXPECT_TRUE(card.upstreamBus().status().isNotSupported());
    EXPECT_EQ(named("TAV2").upstreamBus().value(), 9U);
}

TEST_F(HostAccessors, RefuseWhatIsNotThere) {
    const tav::Device absent = plugin_.device(4);
    EXPECT_TRUE(absent.name().status().isInvalidParam());
    EXPECT_TRUE(absent.model().status().isInvalidParam());
    EXPECT_TRUE(absent.category().status().isInvalidParam());
    EXPECT_TRUE(absent.address().status().isInvalidParam());
    EXPECT_TRUE(absent.upstreamBus().status().isInvalidParam());
    EXPECT_TRUE(absent.linkWidthPerLabel().status().isInvalidParam());
    EXPECT_TRUE(absent.portCount().status().isInvalidParam());
    EXPECT_TRUE(absent.ports().empty());
    EXPECT_TRUE(absent.name().value().empty());
    const tav::Port port = named("TAVCard1").port(2);
    EXPECT_TRUE(port.label().status().isInvalidParam());
    EXPECT_TRUE(port.secondaryBus().status().isInvalidParam());
    EXPECT_TRUE(port.linkWidth().status().isInvalidParam());
    EXPECT_TRUE(port.linkSpeed().status().isInvalidParam());
    EXPECT_TRUE(
        plugin_.device(0).integer(tav::IntegerAttribute::busNumber, 1).status().isInvalidParam());
    EXPECT_TRUE(plugin_.device(0).text(tav::TextAttribute::modelName, 1).status().isInvalidParam());
}

class ScriptedHost : public testing::Test {
protected:
    ScriptedHost() {
        EXPECT_EQ(plugin_.load(SCRIPTED_PLUGIN_FILE), tav::Loading::done);
        EXPECT_EQ(plugin_.initialize(), tav::Status());
    }
    tav::Plugin plugin_;
};

// The identifier has eight bits for the index: port 256 must not be port 0.
TEST_F(ScriptedHost, AsksForNoPortBehindTheLastThatCanBeAskedFor) {
    const tav::Device device = plugin_.device(0);
    EXPECT_EQ(device.portCount().value(), 300U);
    EXPECT_EQ(device.ports().size(), tav::kMostPorts);
    EXPECT_EQ(device.port(255).secondaryBus().value(), 255U);
    EXPECT_TRUE(device.port(256).secondaryBus().status().isInvalidParam());
    EXPECT_TRUE(device.port(256).label().status().isInvalidParam());
    EXPECT_TRUE(device.port(0xFFFFFFFF).linkSpeed().status().isInvalidParam());
    EXPECT_EQ(device.port(65).label().value().view(), "A");
}

TEST_F(ScriptedHost, PassesUnusualValuesOn) {
    const tav::Device device = plugin_.device(0);
    EXPECT_EQ(static_cast<int>(device.category().value()), 99);
    EXPECT_EQ(words(device.category().value()), "");
    EXPECT_EQ(device.port(0).linkWidth().value(), 0xFFFFFFFFU);
    EXPECT_EQ(device.model().value().view(), std::string(TAVPLUGIN_TEXT_SIZE - 1, 'm'));
    EXPECT_EQ(device.port(6).linkSpeed().value().megatransfers(), 64000U);
    EXPECT_EQ(device.port(7).linkSpeed().value().megatransfers(), 0U);
    EXPECT_EQ(device.port(0).linkSpeed().value().megatransfers(), 0U);
}

TEST_F(ScriptedHost, PassesStatusesOfOthersOn) {
    const tav::Device device = plugin_.device(1);
    const tav::Status below(-313007);
    EXPECT_EQ(device.name().status(), below);
    EXPECT_EQ(device.category().status(), below);
    EXPECT_EQ(device.address().status(), below);
    EXPECT_EQ(device.port(0).linkSpeed().status(), below);
    EXPECT_TRUE(device.ports().empty());
}

TEST(HostCategory, HasTheWordsOfDescriptions) {
    EXPECT_EQ(words(tav::Category::pci), "PCI");
    EXPECT_EQ(words(tav::Category::expresscard), "Expresscard");
    EXPECT_EQ(words(tav::Category::switchboxTav), "SwitchboxTav");
}

} // namespace
