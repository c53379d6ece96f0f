// Finding functions among the devices that Windows lists as present.
#include "quil/cQUILDeviceFinder.h"
#include "tests/source/support/raised.h"
#include "tests/support/windows/presentDevice.h"
#include "tests/windows/importedFunction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <setupapi.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::kBusProperties;
using testsupport::makePresentDevice;
using testsupport::Raised;
using testsupport::raisedBy;
using testsupport::RegistryTree;
using testwindows::ImportedFunction;

constexpr tPciIds kSought{0x10B5, 0x8609, 0x1234, 0x0001};
constexpr std::uint32_t kPci = 0x20706369;
constexpr const char* kKeyFile = "zoquil\\protons\\driver\\twinregistrykey";

pcibus::PciFunction functionAt(std::uint8_t bus, std::uint8_t device, std::uint8_t function) {
    pcibus::PciFunction result;
    result.bus = bus;
    result.device = device;
    result.function = function;
    result.vendorId = kSought.vendor;
    result.deviceId = kSought.device;
    result.subsystemVendorId = kSought.subsystemVendor;
    result.subsystemId = kSought.subsystem;
    return result;
}

std::string bytes(std::initializer_list<int> values) {
    std::string text;
    for (const int value : values)
        text.push_back(static_cast<char>(value));
    return text;
}

class WindowsFinder : public testing::Test {
protected:
    RegistryTree& add(std::uint8_t bus, std::uint8_t device, std::uint8_t function) {
        devices_.push_back(makePresentDevice(functionAt(bus, device, function)));
        return devices_.back();
    }
    std::vector<tBusAddress> find() {
        std::vector<tBusAddress> addresses;
        finder_.FindByPciIds(kSought, addresses);
        return addresses;
    }
    // What a search raises, and in `found_` what it has found before.
    Raised searchRaises() {
        return raisedBy([&] { finder_.FindByPciIds(kSought, found_); });
    }

    std::vector<RegistryTree> devices_;
    cQUILDeviceFinder finder_;
    std::vector<tBusAddress> found_;
};

TEST_F(WindowsFinder, WithoutSuchADeviceFindsNothing) {
    EXPECT_THAT(find(), IsEmpty());
}

TEST_F(WindowsFinder, AppendsTheAddressOfAMatch) {
    add(3, 0x1F, 7);
    found_ = {{1, 2, 3}};
    finder_.FindByPciIds(kSought, found_);
    EXPECT_THAT(found_, ElementsAre(tBusAddress{1, 2, 3}, tBusAddress{3, 0x1F, 7}));
}

TEST_F(WindowsFinder, EveryIdentifierMustMatch) {
    std::uint8_t number = 0;
    for (const char* const name :
         {"pciVendorID", "pciDeviceID", "pciSubsystemVendorID", "pciSubsystemID"})
        add(1, number++, 0).setNumber(kBusProperties, name, 0x7777);
    EXPECT_THAT(find(), IsEmpty());
    add(1, number, 0);
    EXPECT_THAT(find(), ElementsAre(tBusAddress{1, number, 0}));
}

TEST_F(WindowsFinder, BothFunctionsOfACardAreFound) {
    add(4, 0, 0);
    add(4, 0, 1);
    EXPECT_THAT(find(), testing::UnorderedElementsAre(tBusAddress{4, 0, 0}, tBusAddress{4, 0, 1}));
}

// The addresses of the test's devices as the system itself enumerates them.
std::vector<tBusAddress> enumerated() {
    std::vector<tBusAddress> addresses;
    const HDEVINFO list =
        SetupDiGetClassDevsA(nullptr, nullptr, nullptr, DIGCF_PRESENT | DIGCF_ALLCLASSES);
    SP_DEVINFO_DATA device = {};
    device.cbSize = sizeof device;
    for (DWORD index = 0; SetupDiEnumDeviceInfo(list, index, &device); ++index) {
        char identifier[200] = {};
        unsigned handle = 0;
        if (SetupDiGetDeviceInstanceIdA(list, &device, identifier, sizeof identifier, nullptr) &&
            std::sscanf(identifier, "PCI\\TAVTEST_%x", &handle) == 1)
            addresses.push_back({static_cast<std::uint8_t>(handle >> 8),
                                 static_cast<std::uint8_t>(handle >> 3 & 0x1F),
                                 static_cast<std::uint8_t>(handle & 7)});
    }
    SetupDiDestroyDeviceInfoList(list);
    return addresses;
}

TEST_F(WindowsFinder, TheOrderIsThatOfTheEnumeration) {
    for (const unsigned number : {9U, 2U, 200U, 4U, 17U, 3U}) {
        const auto bus = static_cast<std::uint8_t>(number);
        add(bus, static_cast<std::uint8_t>(bus % 32), static_cast<std::uint8_t>(bus % 8));
    }
    const std::vector<tBusAddress> expected = enumerated();
    ASSERT_EQ(expected.size(), 6U);
    EXPECT_EQ(find(), expected);
}

TEST_F(WindowsFinder, DevicesOfOtherKindsArePassedOver) {
    add(1, 0, 0).setNumber(kBusProperties, "busType", kPci + 1);
    devices_.push_back(makePresentDevice("TAVTEST_NOTHING"));
    devices_.push_back(makePresentDevice("TAVTEST_NO_VALUES"));
    devices_.back().makeKey(kBusProperties);
    add(2, 0, 0);
    EXPECT_THAT(find(), ElementsAre(tBusAddress{2, 0, 0}));
}

TEST_F(WindowsFinder, ABusTypeThatIsTooLongIsPassedOver) {
    add(1, 0, 0).set(kBusProperties, "busType", REG_BINARY,
                     bytes({0x69, 0x63, 0x70, 0x20, 0, 0, 0, 0}));
    add(2, 0, 0);
    add(3, 0, 0).set(kBusProperties, "busType", REG_SZ, std::string("a text\0", 7));
    EXPECT_THAT(find(), ElementsAre(tBusAddress{2, 0, 0}));
}

TEST_F(WindowsFinder, TheBytesCountAndNotTheType) {
    RegistryTree& device = add(1, 0, 0);
    device.set(kBusProperties, "busType", REG_BINARY, bytes({0x69, 0x63, 0x70, 0x20}));
    device.set(kBusProperties, "pciVendorID", REG_BINARY, bytes({0xB5, 0x10, 0, 0}));
    EXPECT_THAT(find(), ElementsAre(tBusAddress{1, 0, 0}));
}

TEST_F(WindowsFinder, MissingBytesOfAShortValueAreZero) {
    RegistryTree& device = add(1, 0, 0);
    device.set(kBusProperties, "pciVendorID", REG_BINARY, bytes({0xB5, 0x10}));
    device.set(kBusProperties, "pciBusNumber", REG_BINARY, bytes({0x42}));
    device.set(kBusProperties, "pciDeviceNumber", REG_BINARY, "");
    EXPECT_THAT(find(), ElementsAre(tBusAddress{0x42, 0, 0}));
    device.set(kBusProperties, "busType", REG_BINARY, bytes({0x69, 0x63, 0x70}));
    EXPECT_THAT(find(), IsEmpty());
}

TEST_F(WindowsFinder, APciDeviceWithoutAValueRaises) {
    const char* const names[] = {"pciVendorID",      "pciDeviceID",  "pciSubsystemVendorID",
                                 "pciSubsystemID",   "pciBusNumber", "pciDeviceNumber",
                                 "pciFunctionNumber"};
    for (const char* const missing : names) {
        devices_.push_back(makePresentDevice("TAVTEST_INCOMPLETE"));
        RegistryTree& device = devices_.back();
        device.setNumber(kBusProperties, "busType", kPci);
        const std::map<std::string, std::uint32_t> ids = {
            {"pciVendorID", kSought.vendor},
            {"pciDeviceID", kSought.device},
            {"pciSubsystemVendorID", kSought.subsystemVendor},
            {"pciSubsystemID", kSought.subsystem}};
        for (const char* const name : names) {
            const auto id = ids.find(name);
            if (std::string(name) != missing)
                device.setNumber(kBusProperties, name, id == ids.end() ? 1 : id->second);
        }
        const Raised raised = searchRaises();
        EXPECT_EQ(raised.code, static_cast<std::int32_t>(0x80070002)) << missing;
        EXPECT_TRUE(raised.hasSite(kKeyFile, "status")) << missing;
        EXPECT_EQ(raised.record["line"], 102) << missing;
        EXPECT_THAT(found_, IsEmpty());
        devices_.clear();
    }
}

TEST_F(WindowsFinder, AValueOfEightBytesRaises) {
    add(1, 0, 0);
    add(2, 0, 0).set(kBusProperties, "pciFunctionNumber", REG_QWORD, std::string(8, '\1'));
    const Raised raised = searchRaises();
    EXPECT_EQ(raised.code, -52019);
    EXPECT_TRUE(raised.hasSite(kKeyFile, "kQuilErrBufferTooSmall"));
    EXPECT_EQ(raised.record["line"], 97);
    EXPECT_THAT(found_, ElementsAre(tBusAddress{1, 0, 0})) << "what was found before stays";
}

// Sees the calls of a search.
struct SetupCalls {
    static inline std::vector<std::string> lists;
    static inline std::vector<std::string> keys;
    static inline int destroyed = 0;
    static inline bool listFails = false; // without a code, unless there is one
    static inline DWORD listError = ERROR_SUCCESS;
    static inline DWORD keyError = ERROR_SUCCESS;
    static inline decltype(&SetupDiGetClassDevsA) realList = nullptr;
    static inline decltype(&SetupDiOpenDevRegKey) realKey = nullptr;
    static inline decltype(&SetupDiDestroyDeviceInfoList) realDestroy = nullptr;

    static HDEVINFO WINAPI list(const GUID* type, PCSTR enumerator, HWND parent, DWORD flags) {
        lists.push_back(std::string(type == nullptr && enumerator == nullptr && parent == nullptr
                                        ? "everything "
                                        : "something ") +
                        std::to_string(flags));
        if (!listFails && listError == ERROR_SUCCESS)
            return realList(type, enumerator, parent, flags);
        SetLastError(listError);
        return INVALID_HANDLE_VALUE;
    }
    static HKEY WINAPI key(HDEVINFO devices, PSP_DEVINFO_DATA device, DWORD scope, DWORD profile,
                           DWORD type, REGSAM access) {
        keys.push_back(std::to_string(scope) + " " + std::to_string(profile) + " " +
                       std::to_string(type) + " " + std::to_string(access));
        if (keyError == ERROR_SUCCESS)
            return realKey(devices, device, scope, profile, type, access);
        SetLastError(keyError);
        return static_cast<HKEY>(INVALID_HANDLE_VALUE);
    }
    static BOOL WINAPI destroy(HDEVINFO devices) {
        ++destroyed;
        return realDestroy(devices);
    }

    SetupCalls() {
        lists.clear();
        keys.clear();
        destroyed = 0;
        listFails = false;
        listError = keyError = ERROR_SUCCESS;
        realList = reinterpret_cast<decltype(realList)>(list_.real());
        realKey = reinterpret_cast<decltype(realKey)>(key_.real());
        realDestroy = reinterpret_cast<decltype(realDestroy)>(destroy_.real());
    }

private:
    ImportedFunction list_{"SetupDiGetClassDevsA", reinterpret_cast<void*>(&list)};
    ImportedFunction key_{"SetupDiOpenDevRegKey", reinterpret_cast<void*>(&key)};
    ImportedFunction destroy_{"SetupDiDestroyDeviceInfoList", reinterpret_cast<void*>(&destroy)};
};

TEST_F(WindowsFinder, AsksForAllPresentDevicesAndReadsTheirHardwareKeys) {
    add(1, 0, 0);
    const SetupCalls calls;
    EXPECT_THAT(find(), ElementsAre(tBusAddress{1, 0, 0}));
    EXPECT_THAT(SetupCalls::lists, ElementsAre("everything 6"));
    // Global scope, no profile, hardware key, 0x20019.
    EXPECT_EQ(std::count(SetupCalls::keys.begin(), SetupCalls::keys.end(), "1 0 1 131097"),
              static_cast<std::ptrdiff_t>(SetupCalls::keys.size()));
    static_assert(131097 == 0x20019);
    EXPECT_GE(SetupCalls::keys.size(), 8U);
    EXPECT_EQ(SetupCalls::destroyed, 1);
}

TEST_F(WindowsFinder, GivesTheListBackWhenItRaises) {
    add(1, 0, 0).set(kBusProperties, "pciBusNumber", REG_QWORD, std::string(8, '\1'));
    const SetupCalls calls;
    EXPECT_EQ(searchRaises().code, -52019);
    EXPECT_EQ(SetupCalls::destroyed, 1);
}

TEST_F(WindowsFinder, WithoutTheListRaisesTheSystemsError) {
    const SetupCalls calls;
    SetupCalls::listError = ERROR_ACCESS_DENIED;
    const Raised raised = searchRaises();
    EXPECT_EQ(raised.code, static_cast<std::int32_t>(0x80070005));
    EXPECT_TRUE(raised.hasSite("zoquil\\protons\\enumeration\\windows\\tdeviceiterator", "status"));
    EXPECT_EQ(raised.record["line"], 41);
    EXPECT_EQ(SetupCalls::destroyed, 0);
}

TEST_F(WindowsFinder, AFailureOfTheDeviceInstallationKeepsAFacilityOfItsOwn) {
    const SetupCalls calls;
    SetupCalls::listError = ERROR_NO_SUCH_DEVINST;
    static_assert(ERROR_NO_SUCH_DEVINST == 0xE000020B);
    EXPECT_EQ(searchRaises().code, HRESULT_FROM_SETUPAPI(ERROR_NO_SUCH_DEVINST));
    EXPECT_EQ(static_cast<std::uint32_t>(searchRaises().code), 0x800F020BU);
    // Neither mark alone makes such a code.
    SetupCalls::listError = 0x2000020B;
    EXPECT_EQ(static_cast<std::uint32_t>(searchRaises().code), 0x8007020BU);
    SetupCalls::listError = 0xC000020B;
    EXPECT_EQ(static_cast<std::uint32_t>(searchRaises().code), 0x8007020BU);
}

TEST_F(WindowsFinder, AListThatFailsWithoutACodeIsAFailure) {
    add(1, 0, 0);
    const SetupCalls calls;
    SetupCalls::listFails = true;
    EXPECT_EQ(static_cast<std::uint32_t>(searchRaises().code), 0x8007001FU);
    EXPECT_THAT(found_, IsEmpty());
}

TEST_F(WindowsFinder, ADeviceWhoseHardwareKeyCannotBeOpenedIsPassedOver) {
    add(1, 0, 0);
    const SetupCalls calls;
    SetupCalls::keyError = ERROR_ACCESS_DENIED;
    EXPECT_THAT(find(), IsEmpty());
    EXPECT_GE(SetupCalls::keys.size(), 1U);
}

} // namespace
