// The PCI bridge library as its users see it: the names, shapes and statuses of its eighteen
// functions. The library itself is loaded at run time; zopcibrd/ is a substitute for it, and its
// header documents the interface of both.
#pragma once

#include "zopcibrd/zopcibrd.h"

#include <cstddef>
#include <cstdint>

namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0 {

// Bridge and session handles are issued by the library; this value means none.
inline constexpr std::uint32_t kNoHandle = 0xFFFFFFFF;

// The library's answers that its users tell apart; the last one is also that of a function that is
// not bound.
using ::kPciBrdErrBufferTooSmall;
using ::kPciBrdErrInvalidArgument;
using ::kPciBrdErrNotFound;
using ::kPciBrdErrUnavailable;

// Attributes of bridges.
inline constexpr std::uint32_t kAttributeSecondaryBus = kPciBrdAttrSecondaryBus;
inline constexpr std::uint32_t kAttributeLinkWidth = kPciBrdAttrLinkWidth;
inline constexpr std::uint32_t kAttributeLinkSpeed = kPciBrdAttrLinkSpeed;

// The functions, in the order in which they are bound.
enum class BridgeFunction : std::uint8_t {
    OpenSession,
    CloseSession,
    FindBridgesByPciIds,
    FindBridgeByAddress,
    FindBridgeBySlotPath,
    FindParentBridgeForBus,
    GetBridgeParent,
    GetBridgeChildren,
    GetBusChildren,
    GetRootBuses,
    GetBridgeAddress,
    GetBridgeSlotPath,
    GetBridgeIds,
    SetAttributeU32,
    GetAttributeU32,
    OpenBridge,
    CloseBridge,
    EepromUpdate,
};
inline constexpr std::size_t kBridgeFunctionCount = 18;

// What the library exports for each, and what is answered while it is not bound: the two closing
// functions succeed, so that tearing down never fails.
struct BridgeSymbol {
    const char* name;
    std::int32_t whenUnbound;
};
inline constexpr BridgeSymbol kBridgeSymbols[kBridgeFunctionCount] = {
    {"ZoPciBrd_OpenSession", kPciBrdErrUnavailable},
    {"ZoPciBrd_CloseSession", 0},
    {"ZoPciBrd_FindBridgesByPciIds", kPciBrdErrUnavailable},
    {"ZoPciBrd_FindBridgeByAddress", kPciBrdErrUnavailable},
    {"ZoPciBrd_FindBridgeBySlotPath", kPciBrdErrUnavailable},
    {"ZoPciBrd_FindParentBridgeForBus", kPciBrdErrUnavailable},
    {"ZoPciBrd_GetBridgeParent", kPciBrdErrUnavailable},
    {"ZoPciBrd_GetBridgeChildren", kPciBrdErrUnavailable},
    {"ZoPciBrd_GetBusChildren", kPciBrdErrUnavailable},
    {"ZoPciBrd_GetRootBuses", kPciBrdErrUnavailable},
    {"ZoPciBrd_GetBridgeAddress", kPciBrdErrUnavailable},
    {"ZoPciBrd_GetBridgeSlotPath", kPciBrdErrUnavailable},
    {"ZoPciBrd_GetBridgeIds", kPciBrdErrUnavailable},
    {"ZoPciBrd_SetAttributeU32", kPciBrdErrUnavailable},
    {"ZoPciBrd_GetAttributeU32", kPciBrdErrUnavailable},
    {"ZoPciBrd_OpenBridge", kPciBrdErrUnavailable},
    {"ZoPciBrd_CloseBridge", 0},
    {"ZoPciBrd_EepromUpdate", kPciBrdErrUnavailable},
};

// What only the substitute library exports: all functions of the bus that a session has read.
inline constexpr const char* kFunctionListSymbol = "ZoPciBrd_GetFunctions";

} // namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0
