// The bridge wrapper over the run-time binding. Made by tavPlugin_initialize on its stack.
#pragma once

#include "pciBrdWrapper/cPciBrdDynLib.h"
#include "pciBrdWrapper/iPciBrdWrapper_ex.h"
#include "pcibus/pciFunction.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0 {

class cPciBrdWrapper_ex : public iPciBrdWrapper_ex {
public:
    // Loads the bridge library; `status` tells the outcome, as cPciBrdDynLib says. A wrapper whose
    // binding failed raises from every operation that raises.
    explicit cPciBrdWrapper_ex(nZOQUIL000::tErrorStatus& status) : dynLib(status) {}

    // Closes the session if one is open and unloads the library.
    ~cPciBrdWrapper_ex() override;
    cPciBrdWrapper_ex(const cPciBrdWrapper_ex&) = delete;
    cPciBrdWrapper_ex& operator=(const cPciBrdWrapper_ex&) = delete;

    std::int32_t OpenSession(std::uint32_t openOption) override;
    std::int32_t CloseSession() override;
    [[nodiscard]] std::uint32_t IsSessionOpen() const override { return sessionOpen; }
    std::int32_t FindBridgesByPciIds(const tPciIds& ids, tBridgeList& bridges) override;
    std::int32_t FindBridgeByAddress(std::uint8_t bus, std::uint8_t device, std::uint8_t function,
                                     std::uint32_t& bridge) override;
    std::int32_t FindBridgeBySlotPath(const cSlotPath& path, std::uint32_t& bridge) override;
    std::int32_t FindParentBridgeForBus(std::uint8_t bus, std::uint32_t& bridge) override;
    std::int32_t GetBridgeParent(std::uint32_t bridge, std::uint32_t& parent) override;
    std::int32_t GetBridgeChildren(std::uint32_t bridge, tBridgeList& bridges) override;
    std::int32_t GetBusChildren(std::uint8_t bus, tBridgeList& bridges) override;
    std::int32_t GetRootBuses(tBusList& buses) override;
    std::int32_t GetBridgeAddress(std::uint32_t bridge, std::uint8_t* bus, std::uint8_t* device,
                                  std::uint8_t* function) override;
    std::int32_t GetBridgeSlotPath(std::uint32_t bridge, cSlotPath& path) override;
    std::int32_t GetBridgeIds(std::uint32_t bridge, std::uint16_t* vendor, std::uint16_t* device,
                              std::uint16_t* subsystemVendor, std::uint16_t* subsystem) override;
    std::int32_t SetAttributeU32(std::uint32_t bridge, std::uint32_t attribute,
                                 std::uint32_t value) override;
    std::int32_t GetAttributeU32(std::uint32_t bridge, std::uint32_t attribute,
                                 std::uint32_t& value) override;
    std::int32_t OpenBridge(std::uint32_t bridge) override;
    std::int32_t CloseBridge(std::uint32_t bridge) override;
    std::int32_t EepromUpdate(std::uint32_t bridge, std::uint16_t first, std::uint16_t second,
                              std::uint32_t third, std::uint32_t fourth, std::uint32_t fifth,
                              void* data) override;

    // All functions of the bus that the open session has read; nothing without a session, and from
    // a library that does not list them, announces more than a bus can have (65,536) or changes its
    // mind about their number. Raises std::bad_alloc.
    [[nodiscard]] std::optional<std::vector<pcibus::PciFunction>> SessionFunctions();

private:
    std::uint32_t session = kNoHandle;
    std::uint32_t sessionOpen = 0;
    cPciBrdDynLib dynLib;
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0
