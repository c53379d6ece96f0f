// The PCI bridge library as its users see it: the names, shapes and statuses of its eighteen
// functions. The library itself is loaded at run time; zopcibrd/ is a substitute for it.
#pragma once

#include <cstdint>

namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0 {

// Bridge and session handles are issued by the library; this value means none.
inline constexpr std::uint32_t kNoHandle = 0xFFFFFFFF;

// The library's answers that its users tell apart.
inline constexpr std::int32_t kPciBrdErrInvalidArgument = -313001; // a bad handle or attribute
inline constexpr std::int32_t kPciBrdErrBufferTooSmall =
    -313002; // the needed count is written back
inline constexpr std::int32_t kPciBrdErrNotFound = -313003;
inline constexpr std::int32_t kPciBrdErrUnavailable = -313008; // the function is not bound

// Attributes of bridges.
inline constexpr std::uint32_t kAttributeSecondaryBus = 0x20000300;
inline constexpr std::uint32_t kAttributeLinkWidth = 0x20000B00;
inline constexpr std::uint32_t kAttributeLinkSpeed = 0x20000C00;

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

} // namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0
