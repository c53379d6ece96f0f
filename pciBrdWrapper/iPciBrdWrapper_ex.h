// How the device cache and the topology walk talk to PCI bridges: one session, lists as growable
// arrays, and failures as exceptions. A bridge that is not found is an ordinary answer.
#pragma once

#include "pciBrdWrapper/bridgeLibrary.h"
#include "pciBrdWrapper/zeroedAllocator.h"
#include "pxidrivertools/cSlotPath.h"
#include "quil/tPciIds.h"

#include <cstdint>
#include <vector>

namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0 {

using tBridgeList = std::vector<std::uint32_t, ZeroedAllocator<std::uint32_t>>;
using tBusList = std::vector<std::uint8_t, ZeroedAllocator<std::uint8_t>>;

// Every operation returns the bridge library's status, zero or positive on success. Unless noted, a
// negative one is raised as zoerr::Exception. Used from one thread at a time.
class iPciBrdWrapper_ex {
public:
    using cSlotPath = nZoPxiDriverTools_1_0::cSlotPath;

    virtual ~iPciBrdWrapper_ex() = default;

    // Opens a session; one that is open is closed first.
    virtual std::int32_t OpenSession(std::uint32_t openOption) = 0;
    // Closes the session, also when none is open. Never raises.
    virtual std::int32_t CloseSession() = 0;
    [[nodiscard]] virtual std::uint32_t IsSessionOpen() const = 0;

    // The lists: replace the contents of the array. When the library answers the question for the
    // count with success, the array is left as it was; so callers pass an empty one. Raise
    // std::bad_alloc when the announced list does not fit into memory.
    virtual std::int32_t FindBridgesByPciIds(const tPciIds& ids, tBridgeList& bridges) = 0;

    // The look-ups: `bridge` becomes kNoHandle, and kPciBrdErrNotFound is returned and not raised,
    // when there is no such bridge.
    virtual std::int32_t FindBridgeByAddress(std::uint8_t bus, std::uint8_t device,
                                             std::uint8_t function, std::uint32_t& bridge) = 0;
    virtual std::int32_t FindBridgeBySlotPath(const cSlotPath& path, std::uint32_t& bridge) = 0;
    virtual std::int32_t FindParentBridgeForBus(std::uint8_t bus, std::uint32_t& bridge) = 0;
    virtual std::int32_t GetBridgeParent(std::uint32_t bridge, std::uint32_t& parent) = 0;

    virtual std::int32_t GetBridgeChildren(std::uint32_t bridge, tBridgeList& bridges) = 0;
    virtual std::int32_t GetBusChildren(std::uint8_t bus, tBridgeList& bridges) = 0;
    virtual std::int32_t GetRootBuses(tBusList& buses) = 0;

    // Outputs that the caller does not want may be null.
    virtual std::int32_t GetBridgeAddress(std::uint32_t bridge, std::uint8_t* bus,
                                          std::uint8_t* device, std::uint8_t* function) = 0;
    virtual std::int32_t GetBridgeSlotPath(std::uint32_t bridge, cSlotPath& path) = 0;
    virtual std::int32_t GetBridgeIds(std::uint32_t bridge, std::uint16_t* vendor,
                                      std::uint16_t* device, std::uint16_t* subsystemVendor,
                                      std::uint16_t* subsystem) = 0;
    virtual std::int32_t SetAttributeU32(std::uint32_t bridge, std::uint32_t attribute,
                                         std::uint32_t value) = 0;
    virtual std::int32_t GetAttributeU32(std::uint32_t bridge, std::uint32_t attribute,
                                         std::uint32_t& value) = 0;
    virtual std::int32_t OpenBridge(std::uint32_t bridge) = 0;
    // Returns the library's status unchanged and never raises, so that a clean-up path cannot.
    virtual std::int32_t CloseBridge(std::uint32_t bridge) = 0;
    virtual std::int32_t EepromUpdate(std::uint32_t bridge, std::uint16_t first,
                                      std::uint16_t second, std::uint32_t third,
                                      std::uint32_t fourth, std::uint32_t fifth, void* data) = 0;
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0
