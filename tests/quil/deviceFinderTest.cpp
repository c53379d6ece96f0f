// Finding functions by their identifiers, and what becomes of properties that cannot be read.
#include "quil/cQUILDeviceFinder.h"
#include "quil/zoerr.h"
#include "tests/quil/fakeDevices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using nZOQUIL000::tErrorStatus;
using platform::PropertyRead;
using testing::ElementsAre;
using testing::IsEmpty;

using Step = PropertyRead::Step;

constexpr tPciIds kSought{0x10B5, 0x8609, 0x1234, 0x0001};
constexpr std::uint32_t kPci = 0x20706369;

fakes::Devices::Values pci(const tPciIds& ids, std::uint8_t bus, std::uint8_t device,
                           std::uint8_t function) {
    return {{"busType", kPci},
            {"pciVendorID", ids.vendor},
            {"pciDeviceID", ids.device},
            {"pciSubsystemVendorID", ids.subsystemVendor},
            {"pciSubsystemID", ids.subsystem},
            {"pciBusNumber", bus},
            {"pciDeviceNumber", device},
            {"pciFunctionNumber", function}};
}

std::string siteRecord(const char* constant, const char* file, int line) {
    return std::string(R"({"error_constant":")") + constant + R"(","file":")" + file +
           R"(","line":)" + std::to_string(line) + R"(,"component":"zotavpci"})";
}
constexpr const char* kDeviceFile = R"(zoquil\\protons\\enumeration\\windows\\tdeviceiterator)";
constexpr const char* kKeyFile = R"(zoquil\\protons\\driver\\twinregistrykey)";

// How a failed read is reported.
struct Failure {
    PropertyRead read;
    std::int32_t code;
    std::string record;
};
const std::vector<Failure>& failures() {
    static const std::vector<Failure> all = {
        {fakes::failed(Step::hardwareKey, 5), static_cast<std::int32_t>(0x80070005),
         siteRecord("status", kDeviceFile, 130)},
        {fakes::failed(Step::busProperties, 2), static_cast<std::int32_t>(0x80070002),
         siteRecord("status", kKeyFile, 313)},
        {fakes::failed(Step::value, 234, true), -52019,
         siteRecord("kQuilErrBufferTooSmall", kKeyFile, 97)},
        {fakes::failed(Step::value, 2), static_cast<std::int32_t>(0x80070002),
         siteRecord("status", kKeyFile, 102)},
        {fakes::failed(Step::value, platform::outOfMemoryCode()), -52000,
         siteRecord("status", kKeyFile, 102)},
        // A failure without a reason.
        {fakes::failed(Step::hardwareKey, 0), -52006,
         siteRecord("kQuilErrDeviceQuery", kDeviceFile, 130)},
        {fakes::failed(Step::busProperties, 0), -52006,
         siteRecord("kQuilErrDeviceQuery", kKeyFile, 313)},
        {fakes::failed(Step::value, 0), -52006, siteRecord("kQuilErrDeviceQuery", kKeyFile, 102)},
    };
    return all;
}

class Finder : public testing::Test {
protected:
    Finder() {
        auto devices = std::make_unique<fakes::Devices>(record_);
        devices_ = devices.get();
        finder_ = std::make_unique<cQUILDeviceFinder>(std::move(devices));
    }
    std::vector<tBusAddress> find() {
        std::vector<tBusAddress> addresses;
        finder_->FindByPciIds(kSought, addresses);
        EXPECT_EQ(record_.opened, 1);
        EXPECT_EQ(record_.closed, 1);
        return addresses;
    }
    // What a search raises; code 0 when nothing.
    std::pair<std::int32_t, std::string> failureOfSearch(std::vector<tBusAddress>& addresses) {
        try {
            finder_->FindByPciIds(kSought, addresses);
        } catch (const zoerr::Exception& exception) {
            return {exception.status().code, exception.what()};
        }
        return {0, ""};
    }

    fakes::Record record_;
    fakes::Devices* devices_ = nullptr;
    std::unique_ptr<iQUILDeviceFinder> finder_;
};

TEST_F(Finder, AppendsTheAddressOfAMatch) {
    devices_->list = {pci(kSought, 3, 0x1F, 7)};
    std::vector<tBusAddress> addresses = {{1, 2, 3}};
    finder_->FindByPciIds(kSought, addresses);
    EXPECT_THAT(addresses, ElementsAre(tBusAddress{1, 2, 3}, tBusAddress{3, 0x1F, 7}));
    EXPECT_THAT(record_.names,
                ElementsAre("0 busType", "0 pciVendorID", "0 pciDeviceID", "0 pciSubsystemVendorID",
                            "0 pciSubsystemID", "0 pciBusNumber", "0 pciDeviceNumber",
                            "0 pciFunctionNumber"));
}

TEST_F(Finder, WithoutDevicesFindsNothing) {
    EXPECT_THAT(find(), IsEmpty());
}

TEST_F(Finder, EveryIdentifierMustMatch) {
    for (std::uint16_t tPciIds::*field :
         {&tPciIds::vendor, &tPciIds::device, &tPciIds::subsystemVendor, &tPciIds::subsystem}) {
        tPciIds other = kSought;
        other.*field ^= 0x0100;
        devices_->list.push_back(pci(other, 1, 1, 1));
    }
    std::vector<tBusAddress> addresses = {{1, 2, 3}};
    finder_->FindByPciIds(kSought, addresses);
    EXPECT_THAT(addresses, ElementsAre(tBusAddress{1, 2, 3}));
    EXPECT_EQ(record_.reads, 4 * 5);
}

TEST_F(Finder, KeepsTheOrderOfEnumerationAndDuplicates) {
    devices_->list = {pci(kSought, 9, 0, 1), pci(kSought, 9, 0, 0), pci(kSought, 2, 3, 0),
                      pci(kSought, 9, 0, 1)};
    EXPECT_THAT(find(), ElementsAre(tBusAddress{9, 0, 1}, tBusAddress{9, 0, 0},
                                    tBusAddress{2, 3, 0}, tBusAddress{9, 0, 1}));
}

TEST_F(Finder, DevicesThatTheListKnowsNotToMatchAreNotAsked) {
    devices_->knows = true;
    devices_->list = {pci(kSought, 1, 0, 0), pci(kSought, 2, 0, 0), pci(kSought, 3, 0, 0)};
    devices_->list[2]["pciDeviceID"] = 1;
    EXPECT_THAT(find(), ElementsAre(tBusAddress{1, 0, 0}));
    EXPECT_EQ(record_.reads, 8 + 5) << "the one found, and the one that is asked in vain";
    EXPECT_EQ(devices_->asked.vendor, kSought.vendor);
    EXPECT_EQ(devices_->asked.device, kSought.device);
    EXPECT_EQ(devices_->asked.subsystemVendor, kSought.subsystemVendor);
    EXPECT_EQ(devices_->asked.subsystem, kSought.subsystem);
}

TEST_F(Finder, DeviceOfAnotherBusTypeIsPassedOver) {
    devices_->list = {pci(kSought, 1, 0, 0), pci(kSought, 2, 0, 0)};
    devices_->list[0]["busType"] = kPci + 1;
    EXPECT_THAT(find(), ElementsAre(tBusAddress{2, 0, 0}));
    EXPECT_EQ(record_.reads, 1 + 8);
}

TEST_F(Finder, DeviceThatPublishesNothingIsPassedOver) {
    devices_->list = {{}, pci(kSought, 2, 0, 0), {}};
    EXPECT_THAT(find(), ElementsAre(tBusAddress{2, 0, 0}));
}

TEST_F(Finder, DeviceWhoseBusTypeCannotBeReadIsPassedOver) {
    for (Failure failure : failures()) {
        record_ = {};
        failure.read.value = kPci; // what a failed read says is not to be believed
        devices_->list = {pci(kSought, 1, 0, 0), pci(kSought, 2, 0, 0)};
        devices_->failures = {{"0 busType", failure.read}};
        EXPECT_THAT(find(), ElementsAre(tBusAddress{2, 0, 0}));
        EXPECT_EQ(record_.reads, 1 + 8);
    }
}

TEST_F(Finder, ListThatCannotBeBuiltIsRaised) {
    std::vector<tBusAddress> addresses = {{1, 2, 3}};
    devices_->list = {pci(kSought, 1, 0, 0)};
    devices_->openCode = 5;
    auto [code, record] = failureOfSearch(addresses);
    EXPECT_EQ(code, static_cast<std::int32_t>(0x80070005));
    EXPECT_EQ(record, siteRecord("status", kDeviceFile, 41));
    devices_->openCode = platform::outOfMemoryCode();
    EXPECT_EQ(failureOfSearch(addresses).first, -52000);
    EXPECT_THAT(addresses, ElementsAre(tBusAddress{1, 2, 3}));
    EXPECT_EQ(record_.reads, 0);
    EXPECT_EQ(record_.closed, 0) << "there is no list to close";
}

// Three devices: a match (8 reads), one that is not PCI (1), another match (8).
TEST_F(Finder, AnyReadMayFailInAnyWay) {
    devices_->list = {pci(kSought, 1, 0, 0), pci(kSought, 2, 0, 0), pci(kSought, 3, 0, 0)};
    devices_->list[1]["busType"] = 0;
    constexpr int kReads = 17;
    for (const Failure& failure : failures()) {
        devices_->failure = failure.read;
        for (int call = 1; call <= kReads; ++call) {
            record_ = {};
            devices_->failingRead = call;
            std::vector<tBusAddress> addresses;
            const auto [code, record] = failureOfSearch(addresses);
            EXPECT_EQ(record_.opened, 1);
            EXPECT_EQ(record_.closed, 1) << call;
            if (call == 1 || call == 9 || call == 10) { // "busType"
                EXPECT_EQ(code, 0);
                EXPECT_EQ(addresses.size(), call == 9 ? 2U : 1U);
                EXPECT_EQ(record_.reads, call == 9 ? kReads : kReads - 7);
            } else {
                EXPECT_EQ(code, failure.code) << call;
                EXPECT_EQ(record, failure.record) << call;
                EXPECT_EQ(record_.reads, call) << "nothing is read after the failure";
                EXPECT_EQ(addresses.size(), call < 9 ? 0U : 1U);
            }
        }
    }
    record_ = {};
    devices_->failingRead = 0;
    EXPECT_THAT(find(), ElementsAre(tBusAddress{1, 0, 0}, tBusAddress{3, 0, 0}));
    EXPECT_EQ(record_.reads, kReads);
}

TEST_F(Finder, NumbersAreCutToTheirFields) {
    devices_->list = {pci(kSought, 0, 0, 0)};
    devices_->list[0]["pciVendorID"] = 0xABCD0000U | kSought.vendor;
    devices_->list[0]["pciBusNumber"] = 0x1FE;
    EXPECT_THAT(find(), ElementsAre(tBusAddress{0xFE, 0, 0}));
}

// The search reads identifiers and addresses through the virtual table.
class Overriding : public cQUILDeviceFinder {
public:
    using cQUILDeviceFinder::cQUILDeviceFinder;
    void ReadPciIds(tEnumeratedDevice& device, tPciIds& ids) override {
        indices.push_back(device.index);
        ids = kSought;
    }
    void ReadBusAddress(tEnumeratedDevice& device, tBusAddress& address) override {
        EXPECT_EQ(address, (tBusAddress{0xFF, 0xFF, 0xFF}));
        address.bus = static_cast<std::uint8_t>(device.index);
        if (raises)
            throw 5;
    }
    std::vector<std::size_t> indices;
    bool raises = false;
};

TEST(FinderTable, SearchAsksItsOwnOperations) {
    fakes::Record record;
    auto devices = std::make_unique<fakes::Devices>(record);
    devices->list = {{{"busType", kPci}}, {{"busType", 0}}, {{"busType", kPci}}};
    Overriding finder(std::move(devices));
    std::vector<tBusAddress> addresses;
    finder.FindByPciIds(kSought, addresses);
    EXPECT_THAT(finder.indices, ElementsAre(0U, 2U));
    EXPECT_THAT(addresses, ElementsAre(tBusAddress{0, 0xFF, 0xFF}, tBusAddress{2, 0xFF, 0xFF}));
    EXPECT_EQ(record.closed, 1);
}

TEST(FinderTable, WhateverAnOperationRaisesTheListIsClosed) {
    fakes::Record record;
    auto devices = std::make_unique<fakes::Devices>(record);
    devices->list = {{{"busType", kPci}}};
    Overriding finder(std::move(devices));
    finder.raises = true;
    std::vector<tBusAddress> addresses;
    EXPECT_THROW(finder.FindByPciIds(kSought, addresses), int);
    EXPECT_THAT(addresses, IsEmpty());
    EXPECT_EQ(record.closed, 1);
}

// Reading the properties of one device.
class Property : public testing::Test {
protected:
    void SetUp() override { devices_.list = {pci(kSought, 1, 2, 3)}; }

    fakes::Record record_;
    fakes::Devices devices_{record_};
    tEnumeratedDevice device_{devices_, 0};
    tErrorStatus status_;
};

TEST_F(Property, IsANumberOfFourBytes) {
    devices_.list[0]["any"] = 0x01020304;
    EXPECT_EQ(readNumber(device_, "any", status_), 0x01020304U);
    EXPECT_EQ(status_.code, 0);
    EXPECT_EQ(status_.text, nullptr);
}

TEST_F(Property, FailureSaysWhereAndLeavesTheBuffer) {
    for (const Failure& failure : failures()) {
        devices_.failures = {{"0 busType", failure.read}};
        tErrorStatus status;
        tPropertyBuffer buffer = {'k', 'e', 'p', 't'};
        readProperty(device_, "busType", buffer, status);
        EXPECT_EQ(status.code, failure.code);
        EXPECT_EQ(status.textOrEmpty(), failure.record);
        EXPECT_EQ(buffer, (tPropertyBuffer{'k', 'e', 'p', 't'}));
        tErrorStatus again;
        EXPECT_EQ(readNumber(device_, "busType", again), 0U);
        EXPECT_EQ(again.code, failure.code);
    }
}

TEST_F(Property, TooLongCountsOnlyForTheValue) {
    devices_.failures = {{"0 busType", fakes::failed(Step::hardwareKey, 5, true)}};
    readNumber(device_, "busType", status_);
    EXPECT_EQ(status_.code, static_cast<std::int32_t>(0x80070005));
}

TEST_F(Property, NothingIsReadAfterAnEarlierFailure) {
    status_.code = -1;
    tPropertyBuffer buffer = {'k', 'e', 'p', 't'};
    readProperty(device_, "busType", buffer, status_);
    readProperty(device_, "pciSlotPath", buffer, status_);
    EXPECT_EQ(status_.code, -1);
    EXPECT_EQ(record_.reads, 0);
    EXPECT_EQ(devices_.located, 0);
}

TEST_F(Property, SlotPathIsDerivedAndNotRead) {
    fakes::Tree tree;
    tree.nodes[7] = {"PCI", "PCI\\7", 0x001C0000}; // no parent: short enough for a property
    devices_.tree = &tree;
    devices_.treeNode = 7;
    devices_.list[0]["pciSlotPath"] = 1;
    tPropertyBuffer buffer = {'k', 'e', 'p', 't'};
    readProperty(device_, "pciSlotPath", buffer, status_);
    EXPECT_EQ(status_.code, 0);
    EXPECT_EQ(buffer, (tPropertyBuffer{':', 'E', '0', '\0'}));
    EXPECT_EQ(record_.reads, 0);

    const int calls = tree.calls;
    readProperty(device_, "pciSlotPath", buffer, status_);
    EXPECT_EQ(tree.calls, calls) << "derived once";
    EXPECT_EQ(devices_.located, 1);
}

TEST_F(Property, SlotPathBeyondFourBytesIsTooLong) {
    fakes::Tree tree;
    tree.nodes[1] = {"ROOT", "ROOT\\1"};
    tree.nodes[7] = {"PCI", "PCI\\7", 0x001C0000, 1};
    devices_.tree = &tree;
    devices_.treeNode = 7;
    tPropertyBuffer buffer = {'k', 'e', 'p', 't'};
    readProperty(device_, "pciSlotPath", buffer, status_);
    EXPECT_EQ(status_.code, -52019);
    EXPECT_EQ(status_.textOrEmpty(),
              siteRecord("kQuilErrBufferTooSmall",
                         R"(zoquil\\protons\\enumeration\\windows\\winpcislotpath)", 233));
    EXPECT_EQ(buffer, (tPropertyBuffer{'k', 'e', 'p', 't'}));
    tErrorStatus status;
    ASSERT_TRUE(device_.slotPath);
    EXPECT_EQ(device_.slotPath->text(status), "0000:00:E0");
}

TEST_F(Property, DeviceWithoutAPlaceInTheTreeHasNoSlotPath) {
    tPropertyBuffer buffer = {'k', 'e', 'p', 't'};
    readProperty(device_, "pciSlotPath", buffer, status_);
    EXPECT_EQ(status_.code, -52006);
    EXPECT_EQ(buffer, (tPropertyBuffer{'k', 'e', 'p', 't'}));
    EXPECT_FALSE(device_.slotPath);
}

TEST(FinderAddress, FreshAddressIsAllOnes) {
    EXPECT_EQ(tBusAddress{}, (tBusAddress{0xFF, 0xFF, 0xFF}));
}

} // namespace
