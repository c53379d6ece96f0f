// The functions of the scripted bridge library, but for the seventh.
#include "tests/pciBrdWrapper/libraries/serve.h"
#include "zopcibrd/zopcibrd.h"

using scripted::Room;
using scripted::serve;
using scripted::Values;
using F = scripted::BridgeFunction;

std::int32_t ZoPciBrd_OpenSession(std::uint32_t option, std::uint32_t* session) {
    return serve(F::OpenSession, Values(session), option, session);
}

std::int32_t ZoPciBrd_CloseSession(std::uint32_t session) {
    return serve(F::CloseSession, Values(), session);
}

std::int32_t ZoPciBrd_FindBridgesByPciIds(std::uint32_t session, std::uint16_t vendor,
                                          std::uint16_t device, std::uint16_t subsystemVendor,
                                          std::uint16_t subsystem, std::uint32_t* bridges,
                                          std::uint32_t* count) {
    return serve(F::FindBridgesByPciIds, Room(bridges, count), session, vendor, device,
                 subsystemVendor, subsystem, bridges, count);
}

std::int32_t ZoPciBrd_FindBridgeByAddress(std::uint32_t session, std::uint8_t bus,
                                          std::uint8_t device, std::uint8_t function,
                                          std::uint32_t* bridge) {
    return serve(F::FindBridgeByAddress, Values(bridge), session, bus, device, function, bridge);
}

std::int32_t ZoPciBrd_FindBridgeBySlotPath(std::uint32_t session, const char* slotPath,
                                           std::uint32_t* bridge) {
    return serve(F::FindBridgeBySlotPath, Values(bridge), session, slotPath, bridge);
}

std::int32_t ZoPciBrd_FindParentBridgeForBus(std::uint32_t session, std::uint8_t bus,
                                             std::uint32_t* bridge) {
    return serve(F::FindParentBridgeForBus, Values(bridge), session, bus, bridge);
}

std::int32_t ZoPciBrd_GetBridgeChildren(std::uint32_t session, std::uint32_t bridge,
                                        std::uint32_t* bridges, std::uint32_t* count) {
    return serve(F::GetBridgeChildren, Room(bridges, count), session, bridge, bridges, count);
}

std::int32_t ZoPciBrd_GetBusChildren(std::uint32_t session, std::uint8_t bus,
                                     std::uint32_t* bridges, std::uint32_t* count) {
    return serve(F::GetBusChildren, Room(bridges, count), session, bus, bridges, count);
}

std::int32_t ZoPciBrd_GetRootBuses(std::uint32_t session, std::uint8_t* buses,
                                   std::uint32_t* count) {
    return serve(F::GetRootBuses, Room(buses, count), session, buses, count);
}

std::int32_t ZoPciBrd_GetBridgeAddress(std::uint32_t session, std::uint32_t bridge,
                                       std::uint8_t* bus, std::uint8_t* device,
                                       std::uint8_t* function) {
    return serve(F::GetBridgeAddress, Values(bus, device, function), session, bridge, bus, device,
                 function);
}

std::int32_t ZoPciBrd_GetBridgeSlotPath(std::uint32_t session, std::uint32_t bridge, char* text,
                                        std::uint32_t* size) {
    return serve(F::GetBridgeSlotPath, Room(text, size), session, bridge, text, size);
}

std::int32_t ZoPciBrd_GetBridgeIds(std::uint32_t session, std::uint32_t bridge,
                                   std::uint16_t* vendor, std::uint16_t* device,
                                   std::uint16_t* subsystemVendor, std::uint16_t* subsystem) {
    return serve(F::GetBridgeIds, Values(vendor, device, subsystemVendor, subsystem), session,
                 bridge, vendor, device, subsystemVendor, subsystem);
}

std::int32_t ZoPciBrd_SetAttributeU32(std::uint32_t session, std::uint32_t bridge,
                                      std::uint32_t attribute, std::uint32_t value) {
    return serve(F::SetAttributeU32, Values(), session, bridge, attribute, value);
}

std::int32_t ZoPciBrd_GetAttributeU32(std::uint32_t session, std::uint32_t bridge,
                                      std::uint32_t attribute, std::uint32_t* value) {
    return serve(F::GetAttributeU32, Values(value), session, bridge, attribute, value);
}

std::int32_t ZoPciBrd_OpenBridge(std::uint32_t session, std::uint32_t bridge) {
    return serve(F::OpenBridge, Values(), session, bridge);
}

std::int32_t ZoPciBrd_CloseBridge(std::uint32_t session, std::uint32_t bridge) {
    return serve(F::CloseBridge, Values(), session, bridge);
}

std::int32_t ZoPciBrd_EepromUpdate(std::uint32_t session, std::uint32_t bridge, std::uint16_t first,
                                   std::uint16_t second, std::uint32_t third, std::uint32_t fourth,
                                   std::uint32_t fifth, void* data) {
    return serve(F::EepromUpdate, Values(), session, bridge, first, second, third, fourth, fifth,
                 data);
}
