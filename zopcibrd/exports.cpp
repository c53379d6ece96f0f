// The exported functions: each checks its arguments and asks the session's bus.
#include "pcibus/readBus.h"
#include "platform/busLocation.h"
#include "zopcibrd/sessions.h"
#include "zopcibrd/slotPathText.h"
#include "zopcibrd/zopcibrd.h"

#include <algorithm>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace {

using pcibus::Bus;
using pcibus::PciFunction;

// Runs a function's body, which answers a status and may raise.
template <class Body>
std::int32_t guarded(std::int32_t whenRaised, Body body) noexcept {
    try {
        return body();
    } catch (...) {
        return whenRaised;
    }
}

// Runs `body` with the session's bus. Memory is all that a look-up can be in want of.
template <class Body>
std::int32_t withBus(std::uint32_t session, Body body) noexcept {
    return guarded(kPciBrdErrOutOfMemory, [&]() -> std::int32_t {
        const std::shared_ptr<const Bus> bus = zopcibrd::sessions().find(session);
        return bus == nullptr ? kPciBrdErrInvalidArgument : body(*bus);
    });
}

template <class Body>
std::int32_t withBridge(std::uint32_t session, std::uint32_t handle, Body body) noexcept {
    return withBus(session, [&](const Bus& bus) -> std::int32_t {
        const PciFunction* const bridge = bus.findBridge(handle);
        return bridge == nullptr ? kPciBrdErrInvalidArgument : body(bus, *bridge);
    });
}

std::int32_t answerOne(const PciFunction* found, std::uint32_t* handle) {
    if (handle == nullptr)
        return kPciBrdErrInvalidArgument;
    if (found == nullptr)
        return kPciBrdErrNotFound;
    *handle = found->handle();
    return 0;
}

template <class Element>
std::int32_t answerList(std::span<const Element> list, Element* array, std::uint32_t* count) {
    if (count == nullptr)
        return kPciBrdErrInvalidArgument;
    const std::uint32_t room = *count;
    *count = static_cast<std::uint32_t>(list.size());
    if (list.empty())
        return 0;
    if (array == nullptr || room < list.size())
        return kPciBrdErrBufferTooSmall;
    std::copy(list.begin(), list.end(), array);
    return 0;
}

template <class Value>
void store(Value* output, Value value) {
    if (output != nullptr)
        *output = value;
}

} // namespace

int32_t ZOPCIBRD_CALL ZoPciBrd_OpenSession(uint32_t /*option*/, uint32_t* session) {
    if (session == nullptr)
        return kPciBrdErrInvalidArgument;
    return guarded(kPciBrdErrNoBus, [&]() -> std::int32_t {
        const auto location = platform::busLocation();
        if (!location)
            return kPciBrdErrNoBus;
        *session = zopcibrd::sessions().open(pcibus::readBus(*location));
        return 0;
    });
}

int32_t ZOPCIBRD_CALL ZoPciBrd_CloseSession(uint32_t session) {
    return guarded(kPciBrdErrOutOfMemory, [&]() -> std::int32_t {
        return zopcibrd::sessions().close(session) ? 0 : kPciBrdErrInvalidArgument;
    });
}

int32_t ZOPCIBRD_CALL ZoPciBrd_FindBridgesByPciIds(uint32_t session, uint16_t vendor,
                                                   uint16_t device, uint16_t subsystemVendor,
                                                   uint16_t subsystem, uint32_t* bridges,
                                                   uint32_t* count) {
    return withBus(session, [&](const Bus& bus) {
        return answerList(bus.bridgesWithIds({vendor, device, subsystemVendor, subsystem}), bridges,
                          count);
    });
}

int32_t ZOPCIBRD_CALL ZoPciBrd_FindBridgeByAddress(uint32_t session, uint8_t bus, uint8_t device,
                                                   uint8_t function, uint32_t* bridge) {
    return withBus(session, [&](const Bus& all) {
        const bool inRange = device <= pcibus::kMaxDevice && function <= pcibus::kMaxFunction;
        const auto handle = static_cast<std::uint32_t>(bus << 8 | device << 3 | function);
        return answerOne(inRange ? all.findBridge(handle) : nullptr, bridge);
    });
}

int32_t ZOPCIBRD_CALL ZoPciBrd_FindBridgeBySlotPath(uint32_t session, const char* slotPath,
                                                    uint32_t* bridge) {
    return withBus(session, [&](const Bus& bus) -> std::int32_t {
        if (slotPath == nullptr || bridge == nullptr)
            return kPciBrdErrInvalidArgument;
        return zopcibrd::findBridgeBySlotPath(bus, slotPath, *bridge);
    });
}

int32_t ZOPCIBRD_CALL ZoPciBrd_FindParentBridgeForBus(uint32_t session, uint8_t bus,
                                                      uint32_t* bridge) {
    return withBus(session,
                   [&](const Bus& all) { return answerOne(all.parentOfBus(bus), bridge); });
}

int32_t ZOPCIBRD_CALL ZoPciBrd_GetBridgeParent(uint32_t session, uint32_t bridge,
                                               uint32_t* parent) {
    return withBridge(session, bridge, [&](const Bus& bus, const PciFunction& of) {
        return answerOne(bus.parentOfBus(of.bus), parent);
    });
}

int32_t ZOPCIBRD_CALL ZoPciBrd_GetBridgeChildren(uint32_t session, uint32_t bridge,
                                                 uint32_t* bridges, uint32_t* count) {
    return withBridge(session, bridge, [&](const Bus& bus, const PciFunction& of) {
        return answerList(bus.childrenOf(of), bridges, count);
    });
}

int32_t ZOPCIBRD_CALL ZoPciBrd_GetBusChildren(uint32_t session, uint8_t bus, uint32_t* bridges,
                                              uint32_t* count) {
    return withBus(session,
                   [&](const Bus& all) { return answerList(all.bridgesOn(bus), bridges, count); });
}

int32_t ZOPCIBRD_CALL ZoPciBrd_GetRootBuses(uint32_t session, uint8_t* buses, uint32_t* count) {
    return withBus(session,
                   [&](const Bus& bus) { return answerList(bus.rootBuses(), buses, count); });
}

int32_t ZOPCIBRD_CALL ZoPciBrd_GetBridgeAddress(uint32_t session, uint32_t bridge, uint8_t* bus,
                                                uint8_t* device, uint8_t* function) {
    return withBridge(session, bridge, [&](const Bus&, const PciFunction& of) {
        store(bus, of.bus);
        store(device, of.device);
        store(function, of.function);
        return 0;
    });
}

int32_t ZOPCIBRD_CALL ZoPciBrd_GetBridgeSlotPath(uint32_t session, uint32_t bridge, char* text,
                                                 uint32_t* size) {
    return withBridge(session, bridge, [&](const Bus& bus, const PciFunction& of) -> std::int32_t {
        if (size == nullptr)
            return kPciBrdErrInvalidArgument;
        std::string path;
        if (const std::int32_t failure = zopcibrd::slotPathOf(bus, of, path))
            return failure;
        return answerList(std::span<const char>(path.c_str(), path.size() + 1), text, size);
    });
}

int32_t ZOPCIBRD_CALL ZoPciBrd_GetBridgeIds(uint32_t session, uint32_t bridge, uint16_t* vendor,
                                            uint16_t* device, uint16_t* subsystemVendor,
                                            uint16_t* subsystem) {
    return withBridge(session, bridge, [&](const Bus&, const PciFunction& of) {
        store(vendor, of.vendorId);
        store(device, of.deviceId);
        store(subsystemVendor, of.subsystemVendorId);
        store(subsystem, of.subsystemId);
        return 0;
    });
}

int32_t ZOPCIBRD_CALL ZoPciBrd_SetAttributeU32(uint32_t /*session*/, uint32_t /*bridge*/,
                                               uint32_t /*attribute*/, uint32_t /*value*/) {
    return kPciBrdErrUnavailable;
}

int32_t ZOPCIBRD_CALL ZoPciBrd_GetAttributeU32(uint32_t session, uint32_t bridge,
                                               uint32_t attribute, uint32_t* value) {
    return withBridge(session, bridge, [&](const Bus&, const PciFunction& of) -> std::int32_t {
        if (value == nullptr)
            return kPciBrdErrInvalidArgument;
        switch (attribute) {
        case kPciBrdAttrSecondaryBus:
            *value = of.secondaryBus;
            return 0;
        case kPciBrdAttrLinkWidth:
            *value = of.linkWidth;
            return 0;
        case kPciBrdAttrLinkSpeed:
            *value = of.linkSpeed;
            return 0;
        default:
            return kPciBrdErrInvalidArgument;
        }
    });
}

int32_t ZOPCIBRD_CALL ZoPciBrd_OpenBridge(uint32_t session, uint32_t bridge) {
    return withBridge(session, bridge, [](const Bus&, const PciFunction&) { return 0; });
}

int32_t ZOPCIBRD_CALL ZoPciBrd_CloseBridge(uint32_t session, uint32_t bridge) {
    return ZoPciBrd_OpenBridge(session, bridge);
}

int32_t ZOPCIBRD_CALL ZoPciBrd_EepromUpdate(uint32_t /*session*/, uint32_t /*bridge*/,
                                            uint16_t /*first*/, uint16_t /*second*/,
                                            uint32_t /*third*/, uint32_t /*fourth*/,
                                            uint32_t /*fifth*/, void* /*data*/) {
    return kPciBrdErrUnavailable;
}

int32_t ZOPCIBRD_CALL ZoPciBrd_GetFunctions(uint32_t session, tZoPciBrdFunction* functions,
                                            uint32_t* count) {
    return withBus(session, [&](const Bus& bus) -> std::int32_t {
        std::vector<tZoPciBrdFunction> list;
        if (functions != nullptr)
            list.reserve(bus.functions().size());
        for (const PciFunction& each : bus.functions())
            list.push_back({each.handle(),
                            each.vendorId,
                            each.deviceId,
                            each.subsystemVendorId,
                            each.subsystemId,
                            each.headerType,
                            each.secondaryBus,
                            each.subordinateBus,
                            each.linkWidth,
                            each.linkSpeed,
                            {}});
        return answerList(std::span<const tZoPciBrdFunction>(list), functions, count);
    });
}
