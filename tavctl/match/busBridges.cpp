#include "tavctl/match/busBridges.h"

#include "pxidrivertools/busPlace.h"
#include "quil/zoerr.h"

#include <utility>
#include <vector>

namespace tavctl {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using namespace nZoPciBrdWrapper_15_0;

constexpr std::uint32_t kSession = 1;

[[noreturn]] void refuse(std::int32_t status, std::int32_t line = __builtin_LINE()) {
    zoerr::raise(status, nZOQUIL000::siteHere("tavctl\\busBridges", "refused", line));
}

template <typename Value>
void give(Value* output, Value value) {
    if (output != nullptr)
        *output = value;
}

class BusBridges : public iPciBrdWrapper_ex {
public:
    explicit BusBridges(std::shared_ptr<const pcibus::Bus> bus) : bus_(std::move(bus)) {}

    std::int32_t OpenSession(std::uint32_t) override {
        session_ = kSession;
        return 0;
    }
    std::int32_t CloseSession() override {
        session_ = 0;
        return 0;
    }
    [[nodiscard]] std::uint32_t IsSessionOpen() const override { return session_; }

    std::int32_t FindBridgesByPciIds(const tPciIds& ids, tBridgeList& bridges) override {
        return list(bus_->bridgesWithIds(ids), bridges);
    }
    std::int32_t FindBridgeByAddress(std::uint8_t bus, std::uint8_t device, std::uint8_t function,
                                     std::uint32_t& bridge) override {
        pcibus::PciFunction at;
        at.bus = bus;
        at.device = device;
        at.function = function;
        return found(bus_->findBridge(at.handle()), bridge);
    }
    std::int32_t FindBridgeBySlotPath(const cSlotPath& path, std::uint32_t& bridge) override {
        const pcibus::PciFunction* const at = nZoPxiDriverTools_1_0::functionAt(*bus_, path);
        return found(at != nullptr && at->isBridge() ? at : nullptr, bridge);
    }
    std::int32_t FindParentBridgeForBus(std::uint8_t bus, std::uint32_t& bridge) override {
        return found(bus_->parentOfBus(bus), bridge);
    }
    std::int32_t GetBridgeParent(std::uint32_t bridge, std::uint32_t& parent) override {
        return found(bus_->parentOfBus(require(bridge).bus), parent);
    }
    std::int32_t GetBridgeChildren(std::uint32_t bridge, tBridgeList& bridges) override {
        return list(bus_->childrenOf(require(bridge)), bridges);
    }
    std::int32_t GetBusChildren(std::uint8_t bus, tBridgeList& bridges) override {
        return list(bus_->bridgesOn(bus), bridges);
    }
    std::int32_t GetRootBuses(tBusList& buses) override { return list(bus_->rootBuses(), buses); }

    std::int32_t GetBridgeAddress(std::uint32_t bridge, std::uint8_t* bus, std::uint8_t* device,
                                  std::uint8_t* function) override {
        const pcibus::PciFunction& at = require(bridge);
        give(bus, at.bus);
        give(device, at.device);
        give(function, at.function);
        return 0;
    }
    std::int32_t GetBridgeSlotPath(std::uint32_t bridge, cSlotPath& path) override {
        nZoPxiDriverTools_1_0::setSlotPath(path, *bus_, require(bridge));
        return 0;
    }
    std::int32_t GetBridgeIds(std::uint32_t bridge, std::uint16_t* vendor, std::uint16_t* device,
                              std::uint16_t* subsystemVendor, std::uint16_t* subsystem) override {
        const pcibus::PciFunction& at = require(bridge);
        give(vendor, at.vendorId);
        give(device, at.deviceId);
        give(subsystemVendor, at.subsystemVendorId);
        give(subsystem, at.subsystemId);
        return 0;
    }
    std::int32_t GetAttributeU32(std::uint32_t bridge, std::uint32_t attribute,
                                 std::uint32_t& value) override {
        const pcibus::PciFunction& at = require(bridge);
        switch (attribute) {
        case kAttributeSecondaryBus:
            value = at.secondaryBus;
            return 0;
        case kAttributeLinkWidth:
            value = at.linkWidth;
            return 0;
        case kAttributeLinkSpeed:
            value = at.linkSpeed;
            return 0;
        default:
            refuse(kPciBrdErrInvalidArgument);
        }
    }
    std::int32_t OpenBridge(std::uint32_t bridge) override {
        require(bridge);
        return 0;
    }
    std::int32_t CloseBridge(std::uint32_t) override { return 0; }

    // A recorded bus cannot be changed.
    std::int32_t SetAttributeU32(std::uint32_t, std::uint32_t, std::uint32_t) override {
        refuse(kPciBrdErrUnavailable);
    }
    std::int32_t EepromUpdate(std::uint32_t, std::uint16_t, std::uint16_t, std::uint32_t,
                              std::uint32_t, std::uint32_t, void*) override {
        refuse(kPciBrdErrUnavailable);
    }

private:
    const pcibus::PciFunction& require(std::uint32_t bridge) const {
        const pcibus::PciFunction* const at = bus_->findBridge(bridge);
        if (at == nullptr)
            refuse(kPciBrdErrInvalidArgument);
        return *at;
    }

    static std::int32_t found(const pcibus::PciFunction* at, std::uint32_t& bridge) {
        bridge = at != nullptr ? at->handle() : kNoHandle;
        return at != nullptr ? 0 : kPciBrdErrNotFound;
    }

    template <typename Items, typename List>
    static std::int32_t list(const Items& items, List& result) {
        result.assign(items.begin(), items.end());
        return 0;
    }

    std::shared_ptr<const pcibus::Bus> bus_;
    std::uint32_t session_ = 0;
};

// All functions, bridges too, as a system lists its devices.
class RecordedBusFinder : public iQUILDeviceFinder {
public:
    explicit RecordedBusFinder(std::shared_ptr<const pcibus::Bus> bus) : bus_(std::move(bus)) {}

    void FindByPciIds(const tPciIds& ids, std::vector<tBusAddress>& addresses) override {
        for (const pcibus::PciFunction& each : bus_->functions()) {
            if (each.ids() == ids)
                addresses.push_back({each.bus, each.device, each.function});
        }
    }
    void ReadPciIds(tEnumeratedDevice&, tPciIds&) override { refuse(kPciBrdErrUnavailable); }
    void ReadBusAddress(tEnumeratedDevice&, tBusAddress&) override {
        refuse(kPciBrdErrUnavailable);
    }

private:
    std::shared_ptr<const pcibus::Bus> bus_;
};

} // namespace

MatchBus recordedBus(std::shared_ptr<const pcibus::Bus> bus) {
    auto finder = std::make_unique<RecordedBusFinder>(bus);
    return {std::move(finder), std::make_unique<BusBridges>(std::move(bus))};
}

} // namespace tavctl
