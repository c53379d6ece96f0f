// The list of devices, told from recorded buses.
#include "machine/machineDevices.h"

#include "tests/support/environmentValue.h"
#include "tests/support/machines.h"
#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <string>

namespace {

using platform::DeviceNode;
using platform::DeviceTree;
using platform::PciDevices;
using platform::PropertyRead;
using platform::SystemCode;

constexpr PropertyRead::Step kDone = PropertyRead::Step::done;

class Devices : public testing::Test {
protected:
    static std::uint32_t value(PciDevices& devices, std::size_t index, const char* name) {
        const PropertyRead read = devices.readProperty(index, name);
        EXPECT_EQ(read.step, kDone) << name;
        EXPECT_EQ(read.code, 0U) << name;
        EXPECT_FALSE(read.tooLong) << name;
        return read.value;
    }

    testsupport::TemporaryFolder folder_;
    testsupport::machines::Switch machine_;
    std::filesystem::path dump_ = folder_.file("machine.dump", machine_.bus.dump());
    testsupport::EnvironmentValue variable_{"TAV_PCI_DUMP", dump_.string()};
    std::unique_ptr<PciDevices> devices_ = machine::makePciDevices();
};

TEST_F(Devices, AreTheFunctionsOfTheBusWithTheirNumbers) {
    ASSERT_EQ(devices_->open(), 0U);
    const auto functions = machine_.bus.functions();
    ASSERT_EQ(functions.size(), 10U);
    for (std::size_t i = 0; i < functions.size(); ++i) {
        ASSERT_TRUE(devices_->has(i));
        EXPECT_EQ(value(*devices_, i, "busType"), 0x20706369U);
        EXPECT_EQ(value(*devices_, i, "pciVendorID"), functions[i].vendorId);
        EXPECT_EQ(value(*devices_, i, "pciDeviceID"), functions[i].deviceId);
        EXPECT_EQ(value(*devices_, i, "pciSubsystemVendorID"), functions[i].subsystemVendorId);
        EXPECT_EQ(value(*devices_, i, "pciSubsystemID"), functions[i].subsystemId);
        EXPECT_EQ(value(*devices_, i, "pciBusNumber"), functions[i].bus);
        EXPECT_EQ(value(*devices_, i, "pciDeviceNumber"), functions[i].device);
        EXPECT_EQ(value(*devices_, i, "pciFunctionNumber"), functions[i].function);
    }
    EXPECT_FALSE(devices_->has(functions.size()));
}

TEST_F(Devices, OnlyThoseWithTheIdentifiersAreToBeAsked) {
    ASSERT_EQ(devices_->open(), 0U);
    const auto functions = machine_.bus.functions();
    for (const auto& wanted : functions) {
        const platform::PciIds sought = wanted.ids();
        std::size_t expected = functions.size();
        for (std::size_t index = functions.size() + 1; index-- > 0;) {
            if (index < functions.size() && functions[index].vendorId == wanted.vendorId &&
                functions[index].deviceId == wanted.deviceId &&
                functions[index].subsystemVendorId == wanted.subsystemVendorId &&
                functions[index].subsystemId == wanted.subsystemId)
                expected = index;
            EXPECT_EQ(devices_->nextToAsk(index, sought), expected) << index;
        }
    }
    EXPECT_FALSE(devices_->has(devices_->nextToAsk(0, {1, 2, 3, 4})));
    EXPECT_FALSE(devices_->has(devices_->nextToAsk(0, {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF})));
}

TEST_F(Devices, AreFoundInSysfsToo) {
    const std::filesystem::path root = folder_.path() / "sys";
    machine_.bus.writeSysfs(root);
    variable_.set(root.string());
    ASSERT_EQ(devices_->open(), 0U);
    EXPECT_TRUE(devices_->has(9));
    EXPECT_FALSE(devices_->has(10));
    EXPECT_EQ(value(*devices_, 9, "pciDeviceID"), 0xE003U);
}

TEST_F(Devices, UnknownPropertyFailsAsAMissingValue) {
    ASSERT_EQ(devices_->open(), 0U);
    for (const char* name : {"pciSlotPath", "", "BusType", "busTypes"}) {
        const PropertyRead read = devices_->readProperty(0, name);
        EXPECT_EQ(read.step, PropertyRead::Step::value);
        EXPECT_EQ(read.code, static_cast<SystemCode>(ENOENT));
        EXPECT_FALSE(read.tooLong);
    }
}

TEST_F(Devices, AreNotThereBeforeOpeningAndAfterClosing) {
    DeviceNode node = 77;
    const auto expectNone = [&] {
        EXPECT_FALSE(devices_->has(0));
        const PropertyRead read = devices_->readProperty(0, "busType");
        EXPECT_EQ(read.step, PropertyRead::Step::hardwareKey);
        EXPECT_EQ(read.code, static_cast<SystemCode>(ENOENT));
        EXPECT_EQ(devices_->locate(0, node), nullptr);
        EXPECT_EQ(node, 77U);
    };
    expectNone();
    ASSERT_EQ(devices_->open(), 0U);
    EXPECT_TRUE(devices_->has(0));
    devices_->close();
    expectNone();
}

TEST_F(Devices, OneObjectReadsTheBusOnce) {
    ASSERT_EQ(devices_->open(), 0U);
    devices_->close();
    std::filesystem::remove(dump_);
    ASSERT_EQ(devices_->open(), 0U);
    EXPECT_TRUE(devices_->has(9));
    EXPECT_EQ(machine::makePciDevices()->open(), static_cast<SystemCode>(ENOENT));
}

TEST_F(Devices, BusThatIsNotThereFailsWithTheSystemsCode) {
    variable_.set((folder_.path() / "missing.dump").string());
    EXPECT_EQ(devices_->open(), static_cast<SystemCode>(ENOENT));
    EXPECT_FALSE(devices_->has(0));
    variable_.set((dump_ / "below").string());
    EXPECT_EQ(devices_->open(), static_cast<SystemCode>(ENOTDIR));
    variable_.set(dump_.string());
    EXPECT_EQ(devices_->open(), 0U) << "a failed reading is tried again";
}

TEST_F(Devices, MalformedBusFailsAsABadMessage) {
    variable_.set(folder_.file("bad.dump", "00:00.0 x\n00: zz\n").string());
    EXPECT_EQ(devices_->open(), static_cast<SystemCode>(EBADMSG));
    variable_.set(folder_.path().string()); // a folder without a bus below it
    EXPECT_EQ(devices_->open(), static_cast<SystemCode>(EBADMSG));
}

TEST_F(Devices, HaveTheirPlaceInTheTree) {
    ASSERT_EQ(devices_->open(), 0U);
    const auto functions = machine_.bus.functions();
    for (std::size_t i = 0; i < functions.size(); ++i) {
        DeviceNode node = 0;
        DeviceTree* const tree = devices_->locate(i, node);
        ASSERT_NE(tree, nullptr);
        char identifier[64] = {};
        ASSERT_TRUE(tree->identifier(node, identifier, sizeof identifier));
        EXPECT_EQ(identifier, "PCI\\0000:" + pcibus::addressText(functions[i]));
    }
    DeviceNode node = 0;
    EXPECT_EQ(devices_->locate(functions.size(), node), nullptr);
}

} // namespace
