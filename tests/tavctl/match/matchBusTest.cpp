// The ways to the bus that tavctl matches by agree with the bridge library and the system's list of
// devices.
#include "pciBrdWrapper/cPciBrdWrapper_ex.h"
#include "pcibus/readBus.h"
#include "quil/zoerr.h"
#include "tavctl/match/busBridges.h"
#include "tavctl/match/visibleBus.h"
#include "tests/support/describe.h"
#include "tests/support/environmentValue.h"
#include "tests/support/fileFolder.h"
#include "tests/support/fileText.h"
#include "tests/tavctl/sample.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using namespace nZoPciBrdWrapper_15_0;
using nZoPxiDriverTools_1_0::cSlotPath;
using tavctltest::kProject;
using tavctltest::kSample;

// Every answer of a bus, as text.
class Answers {
public:
    explicit Answers(iPciBrdWrapper_ex& wrapper) : wrapper_(wrapper) {}

    std::vector<std::string> all(const pcibus::Bus& bus) {
        wrapper_.OpenSession(0);
        note("open", wrapper_.IsSessionOpen());
        tBusList roots;
        wrapper_.GetRootBuses(roots);
        for (const auto root : roots)
            note("root", root);
        for (unsigned number = 0; number < 256; ++number) {
            std::uint32_t parent = 7;
            guarded([&] {
                note("status",
                     wrapper_.FindParentBridgeForBus(static_cast<std::uint8_t>(number), parent));
            });
            note("parent of bus", parent);
            guarded([&] {
                tBridgeList bridges;
                wrapper_.GetBusChildren(static_cast<std::uint8_t>(number), bridges);
                list(bridges);
            });
        }
        for (const pcibus::PciFunction& function : bus.functions()) {
            std::uint32_t handle = 7;
            guarded([&] {
                wrapper_.FindBridgeByAddress(function.bus, function.device, function.function,
                                             handle);
            });
            note("at address", handle);
            guarded([&] {
                tBridgeList bridges;
                wrapper_.FindBridgesByPciIds({function.vendorId, function.deviceId,
                                              function.subsystemVendorId, function.subsystemId},
                                             bridges);
                list(bridges);
            });
            askBridge(function.handle());
        }
        askBridge(kNoHandle);
        wrapper_.CloseSession();
        note("open", wrapper_.IsSessionOpen());
        return std::move(notes_);
    }

private:
    void askBridge(std::uint32_t handle) {
        guarded([&] {
            cSlotPath path;
            wrapper_.GetBridgeSlotPath(handle, path);
            nZOQUIL000::tErrorStatus status;
            std::string text;
            path.FormatMachineText(text, status);
            notes_.push_back(text);
            for (int i = 0; i < 3; ++i) {
                std::uint32_t found = 7;
                wrapper_.FindBridgeBySlotPath(path, found);
                note("at path", found);
                path.ApplyRelativePath(i == 0 ? "d0f0" : "-,-", status);
            }
        });
        guarded([&] {
            std::uint32_t parent = 7;
            note("status", wrapper_.GetBridgeParent(handle, parent));
            note("parent", parent);
        });
        guarded([&] {
            tBridgeList bridges;
            wrapper_.GetBridgeChildren(handle, bridges);
            list(bridges);
        });
        guarded([&] {
            std::uint8_t address[3] = {};
            wrapper_.GetBridgeAddress(handle, &address[0], &address[1], &address[2]);
            note("address", address[0] << 8 | address[1] << 3 | address[2]);
            wrapper_.GetBridgeAddress(handle, &address[0], nullptr, nullptr);
        });
        guarded([&] {
            std::uint16_t ids[4] = {};
            wrapper_.GetBridgeIds(handle, &ids[0], &ids[1], &ids[2], &ids[3]);
            for (const auto id : ids)
                note("id", id);
        });
        guarded([&] { wrapper_.OpenBridge(handle); });
        for (const std::uint32_t attribute :
             {kAttributeSecondaryBus, kAttributeLinkWidth, kAttributeLinkSpeed, 0x20000400U})
            guarded([&] {
                std::uint32_t value = 7;
                wrapper_.GetAttributeU32(handle, attribute, value);
                note("attribute", value);
            });
        guarded([&] { wrapper_.SetAttributeU32(handle, kAttributeLinkWidth, 1); });
        guarded([&] { wrapper_.EepromUpdate(handle, 0, 0, 0, 0, 0, nullptr); });
    }

    template <typename Question>
    void guarded(Question question) {
        try {
            question();
        } catch (const zoerr::Exception& exception) {
            note("raised", exception.status().code);
        }
    }

    void note(const std::string& what, std::int64_t number) {
        notes_.push_back(what + " " + std::to_string(number));
    }
    void list(const tBridgeList& bridges) {
        for (const auto bridge : bridges)
            note("bridge", bridge);
    }

    iPciBrdWrapper_ex& wrapper_;
    std::vector<std::string> notes_;
};

TEST(RecordedBus, AnswersAsTheBridgeLibraryDoes) {
    const testsupport::EnvironmentValue dump("TAV_PCI_DUMP", kSample);
    const auto bus = std::make_shared<const pcibus::Bus>(pcibus::readBus(kSample));
    nZOQUIL000::tErrorStatus status;
    cPciBrdWrapper_ex library(status);
    ASSERT_FALSE(status.failed());
    const auto recorded = tavctl::recordedBus(bus);
    const auto expected = Answers(library).all(*bus);
    EXPECT_GT(expected.size(), 500U);
    EXPECT_EQ(Answers(*recorded.wrapper).all(*bus), expected);
}

TEST(RecordedBus, ListsDevicesAsTheSystemDoes) {
    const testsupport::EnvironmentValue dump("TAV_PCI_DUMP", kSample);
    const auto bus = std::make_shared<const pcibus::Bus>(pcibus::readBus(kSample));
    const auto host = tavctl::hostBus();
    const auto recorded = tavctl::recordedBus(bus);
    for (const pcibus::PciFunction& function : bus->functions()) {
        const tPciIds ids{function.vendorId, function.deviceId, function.subsystemVendorId,
                          function.subsystemId};
        std::vector<tBusAddress> expected;
        host.finder->FindByPciIds(ids, expected);
        std::vector<tBusAddress> found;
        recorded.finder->FindByPciIds(ids, found);
        EXPECT_EQ(found, expected);
        EXPECT_FALSE(found.empty());
    }
}

// A box is plugged in between the library's look at the bridges and ours at the devices: either
// both have it, or none.
TEST(HostBus, DevicesAreOfTheBusThatTheBridgesAreOf) {
    const testsupport::FileFolder folder;
    const auto before = pcibus::readBus(kProject.string() + "/samples/renumbering-first.dump");
    const std::string file =
        folder.write("bus", testsupport::fileText(kProject / "samples" / "renumbering-first.dump"));
    const testsupport::EnvironmentValue dump("TAV_PCI_DUMP", file);
    const auto host = tavctl::hostBus();
    host.wrapper->OpenSession(0);
    folder.write("bus", testsupport::fileText(kProject / "samples" / "renumbering-added.dump"));
    std::size_t differing = 0;
    const auto now = pcibus::readBus(file);
    for (const pcibus::PciFunction& function : now.functions()) {
        std::vector<tBusAddress> found;
        host.finder->FindByPciIds(function.ids(), found);
        std::vector<tBusAddress> expected;
        for (const pcibus::PciFunction& each : before.functions()) {
            if (each.ids() == function.ids())
                expected.push_back({each.bus, each.device, each.function});
        }
        EXPECT_EQ(found, expected);
        differing += before.find(function.handle()) == nullptr ? 1 : 0;
    }
    EXPECT_GT(differing, 0U);
    host.wrapper->CloseSession();
}

// Another library lists no functions, and nobody has read the bus before a session is open.
TEST(HostBus, DevicesAreReadWhereNobodyHas) {
    const testsupport::EnvironmentValue dump("TAV_PCI_DUMP", kSample);
    const auto host = tavctl::hostBus();
    const pcibus::Bus bus = pcibus::readBus(kSample);
    std::vector<tBusAddress> found;
    host.finder->FindByPciIds(bus.functions().front().ids(), found);
    EXPECT_FALSE(found.empty());
}

TEST(MachineBus, IsTheSameThroughTheBridgeLibrary) {
    const testsupport::EnvironmentValue dump("TAV_PCI_DUMP", kSample);
    const pcibus::Bus direct = *tavctl::machineBus().searched;
    EXPECT_FALSE(direct.functions().empty());
    EXPECT_EQ(testsupport::describe(tavctl::busOfBridgeLibrary().functions()),
              testsupport::describe(direct.functions()));
}

} // namespace
