// Slot paths out of Windows' own tree of devices. Wine's configuration manager knows no tree, so on
// the real calls a derivation fails as documented; a tree behind the same calls shows the rest.
#include "machine/machineDevices.h"
#include "quil/deviceProperty.h"
#include "quil/slotPathDerivation.h"
#include "tests/support/windows/presentDevice.h"
#include "tests/windows/importedFunction.h"

#include <cfgmgr32.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <setupapi.h>

#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using nZOQUIL000::tErrorStatus;
using testsupport::makePresentDevice;
using testsupport::RegistryTree;
using testwindows::ImportedFunction;

std::string record(int line) {
    return R"({"error_constant":"kQuilErrDeviceQuery",)"
           R"("file":"zoquil\\protons\\enumeration\\windows\\winpcislotpath","line":)" +
           std::to_string(line) + R"(,"component":"zotavpci"})";
}

pcibus::PciFunction someFunction() {
    pcibus::PciFunction function;
    function.bus = 5;
    function.device = 0x1C;
    return function;
}

// A present device, and the system's list in which it stands.
class WindowsSlotPath : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(devices_->open(), platform::kNoSystemError);
        for (index_ = 0; devices_->has(index_); ++index_) {
            const platform::PropertyRead bus = devices_->readProperty(index_, "pciBusNumber");
            if (bus.step == platform::PropertyRead::Step::done && bus.value == 5)
                break;
        }
        ASSERT_TRUE(devices_->has(index_));
        tree_ = devices_->locate(index_, node_);
        ASSERT_NE(tree_, nullptr);
    }
    void expectFailure(int line) {
        tErrorStatus status;
        std::string text = "kept";
        deriveSlotPath(*tree_, node_, text, status);
        EXPECT_EQ(status.code, -52006);
        EXPECT_EQ(status.textOrEmpty(), record(line));
        EXPECT_EQ(text, "kept");
    }
    std::string derive() {
        tErrorStatus status;
        std::string text;
        deriveSlotPath(*tree_, node_, text, status);
        EXPECT_EQ(status.code, 0) << status.textOrEmpty();
        return text;
    }

    RegistryTree device_ = makePresentDevice(someFunction());
    std::unique_ptr<platform::PciDevices> devices_ = machine::makePciDevices();
    std::size_t index_ = 0;
    platform::DeviceTree* tree_ = nullptr;
    platform::DeviceNode node_ = 0;
};

// Wine does not tell the bus by which a device was found.
TEST_F(WindowsSlotPath, OfADeviceThatDoesNotSayItsBusFails) {
    expectFailure(134);
}

TEST_F(WindowsSlotPath, AsAPropertyFailsTheSameWay) {
    tErrorStatus status;
    tPropertyBuffer buffer = {'k', 'e', 'p', 't'};
    tEnumeratedDevice device{*devices_, index_};
    readProperty(device, kSlotPathProperty, buffer, status);
    EXPECT_EQ(status.code, -52006);
    EXPECT_EQ(status.textOrEmpty(), record(134));
    EXPECT_EQ(std::string(buffer.data(), buffer.size()), "kept");
}

// What Wine answers of the tree: nothing, in three ways. Success without an answer is none.
TEST_F(WindowsSlotPath, NoRelativeOfADeviceIsKnownAndOutputsStay) {
    constexpr platform::DeviceNode kPoison = 0x5A5A5A5A;
    platform::DeviceNode result = kPoison;
    EXPECT_FALSE(tree_->parent(node_, result));
    EXPECT_EQ(result, kPoison);
    EXPECT_FALSE(tree_->firstChild(node_, result));
    EXPECT_EQ(result, kPoison);
    EXPECT_FALSE(tree_->nextSibling(node_, result));
    EXPECT_EQ(result, kPoison);

    DEVINST untouched = 0x5A5A5A5A;
    DEVINST other = 0;
    const auto instance = static_cast<DEVINST>(node_);
    EXPECT_EQ(CM_Get_Parent(&other, instance, 0), DWORD{CR_NO_SUCH_DEVNODE});
    EXPECT_EQ(CM_Get_Child(&untouched, instance, 0), DWORD{CR_SUCCESS});
    EXPECT_EQ(untouched, 0x5A5A5A5AU);
    EXPECT_NE(CM_Get_Sibling(&other, instance, 0), DWORD{CR_SUCCESS});
}

TEST_F(WindowsSlotPath, TheDevicesIdentifierIsRealAndLeadsBack) {
    char identifier[200] = "poison";
    ASSERT_TRUE(tree_->identifier(node_, identifier, sizeof identifier));
    EXPECT_STRCASEEQ(identifier, "PCI\\TAVTEST_005E0\\0");
    platform::DeviceNode opened = 0;
    EXPECT_TRUE(tree_->open(identifier, opened));
    char again[200] = "poison";
    EXPECT_TRUE(tree_->identifier(opened, again, sizeof again));
    EXPECT_STREQ(again, identifier);
    EXPECT_FALSE(tree_->open("PCI\\NO SUCH DEVICE\\0", opened));
    char small[10] = "poison";
    EXPECT_FALSE(tree_->identifier(node_, small, sizeof small));
    EXPECT_STREQ(small, "poison");
}

// A machine behind the calls: root bridges 10 and 12 and another device 11 below the machine 1; the
// bridge 20 below 12, and the test's device below that.
struct ToldTree {
    struct Node {
        std::string enumerator;
        std::string identifier;
        DWORD address = 0;
        DEVINST parent = 0; // 0: none
        DEVINST child = 0;
        DEVINST sibling = 0;
    };
    static inline std::map<DEVINST, Node> nodes;
    static inline std::vector<std::string> calls;
    static inline std::string failing; // the call that fails
    static inline bool silentSuccess = false;

    static bool fails(const std::string& call, DEVINST node) {
        calls.push_back(call + " " + std::to_string(node));
        return calls.back() == failing || !nodes.contains(node);
    }
    static BOOL WINAPI property(HDEVINFO, PSP_DEVINFO_DATA device, DWORD number, PDWORD type,
                                PBYTE buffer, DWORD size, PDWORD needed) {
        EXPECT_TRUE(number == SPDRP_ENUMERATOR_NAME || number == SPDRP_ADDRESS);
        const bool isName = number == SPDRP_ENUMERATOR_NAME;
        EXPECT_EQ(size, isName ? 16U : 4U);
        EXPECT_EQ(type, nullptr);
        if (fails(isName ? "enumerator" : "address", device->DevInst))
            return FALSE;
        const Node& node = nodes[device->DevInst];
        const DWORD length =
            isName ? static_cast<DWORD>(node.enumerator.size() + 1) : DWORD{sizeof(DWORD)};
        if (needed != nullptr)
            *needed = length;
        if (length > size)
            return FALSE;
        std::memcpy(buffer,
                    isName ? static_cast<const void*>(node.enumerator.c_str()) : &node.address,
                    length);
        return TRUE;
    }
    static CONFIGRET answer(const char* call, DEVINST from, DEVINST Node::*field, DEVINST* result) {
        if (fails(call, from) || nodes[from].*field == 0)
            return silentSuccess ? CR_SUCCESS : CR_NO_SUCH_DEVNODE;
        *result = nodes[from].*field;
        return CR_SUCCESS;
    }
    static CONFIGRET WINAPI parent(PDEVINST result, DEVINST node, ULONG) {
        return answer("parent", node, &Node::parent, result);
    }
    static CONFIGRET WINAPI child(PDEVINST result, DEVINST node, ULONG) {
        return answer("child", node, &Node::child, result);
    }
    static CONFIGRET WINAPI sibling(PDEVINST result, DEVINST node, ULONG) {
        return answer("sibling", node, &Node::sibling, result);
    }
    static CONFIGRET WINAPI identifier(DEVINST node, PSTR buffer, ULONG size, ULONG) {
        EXPECT_EQ(size, 200U);
        if (fails("identifier", node))
            return CR_NO_SUCH_DEVNODE;
        std::strcpy(buffer, nodes[node].identifier.c_str());
        return CR_SUCCESS;
    }
    static BOOL WINAPI open(HDEVINFO, PCSTR text, HWND, DWORD flags, PSP_DEVINFO_DATA device) {
        EXPECT_EQ(flags, 0U);
        for (const auto& [number, node] : nodes) {
            if (node.identifier == text && !fails("open", number)) {
                device->DevInst = number;
                return TRUE;
            }
        }
        return FALSE;
    }

    explicit ToldTree(platform::DeviceNode device) {
        const auto number = static_cast<DEVINST>(device);
        nodes = {{1001, {"ROOT", "ROOT\\1", 0, 0, 1010, 0}},
                 {1010, {"ACPI", "ACPI\\PNP0A08\\0", 0, 1001, 0, 1011}},
                 {1011, {"ACPI", "ACPI\\PNP0C0F\\1", 0, 1001, 0, 1012}},
                 {1012, {"ACPI", "ACPI\\PNP0A03\\1", 0, 1001, 1020, 0}},
                 {1020, {"PCI", "PCI\\BRIDGE\\1", 0x001C0000, 1012, number, 0}},
                 {number, {"PCI", "PCI\\TAVTEST\\0", 0x00020003, 1020, 0, 0}}};
        calls.clear();
        failing.clear();
        silentSuccess = false;
    }

private:
    ImportedFunction property_{"SetupDiGetDeviceRegistryPropertyA",
                               reinterpret_cast<void*>(&property)};
    ImportedFunction parent_{"CM_Get_Parent", reinterpret_cast<void*>(&parent)};
    ImportedFunction child_{"CM_Get_Child", reinterpret_cast<void*>(&child)};
    ImportedFunction sibling_{"CM_Get_Sibling", reinterpret_cast<void*>(&sibling)};
    ImportedFunction identifier_{"CM_Get_Device_IDA", reinterpret_cast<void*>(&identifier)};
    ImportedFunction open_{"SetupDiOpenDeviceInfoA", reinterpret_cast<void*>(&open)};
};

TEST_F(WindowsSlotPath, IsDerivedThroughTheDocumentedCalls) {
    const std::string device = " " + std::to_string(node_);
    const ToldTree told(node_);
    EXPECT_EQ(derive(), "0000:01:E0:13");
    EXPECT_EQ(ToldTree::calls,
              (std::vector<std::string>{
                  "enumerator" + device, "address" + device, "parent" + device, "identifier 1020",
                  "open 1020", "enumerator 1020", "address 1020", "parent 1020", "identifier 1012",
                  "open 1012", "enumerator 1012", "parent 1012", "child 1001", "identifier 1010",
                  "sibling 1010", "identifier 1011", "sibling 1011"}));
}

TEST_F(WindowsSlotPath, EachFailingCallIsReportedWithItsLine) {
    const std::string device = " " + std::to_string(node_);
    const ToldTree told(node_);
    for (const auto& [call, line] : {std::pair<std::string, int>{"enumerator" + device, 134},
                                     {"address" + device, 159},
                                     {"identifier 1020", 185},
                                     {"open 1020", 179},
                                     {"address 1020", 159},
                                     {"identifier 1012", 185},
                                     {"open 1012", 179}}) {
        ToldTree::failing = call;
        SCOPED_TRACE(call);
        expectFailure(line);
    }
}

TEST_F(WindowsSlotPath, ABusNameThatDoesNotFitIsNotPci) {
    const ToldTree told(node_);
    ToldTree::nodes[static_cast<DEVINST>(node_)].enumerator = "PCI_AND_MUCH_MORE";
    expectFailure(134);
}

// A tree that answers success and nothing else gives no root bridge to count from.
TEST_F(WindowsSlotPath, SuccessWithoutAnAnswerIsNoAnswer) {
    const ToldTree told(node_);
    ToldTree::silentSuccess = true;
    ToldTree::failing = "child 1001";
    EXPECT_EQ(derive(), "0000:00:E0:13");
    ToldTree::failing = "sibling 1010";
    EXPECT_EQ(derive(), "0000:01:E0:13");
    ToldTree::failing = "parent 1012";
    EXPECT_EQ(derive(), "0000:00:E0:13");
}

} // namespace
