#include "pciBrdWrapper/cPciBrdWrapper_ex.h"

#include "quil/zoerr.h"

#include <utility>

namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0 {

namespace {

constexpr const char* kFile = "dep_mirror\\deps\\pciBrdWrapperMock\\includes\\cpcibrdwrapper_ex";

// Returns a status that is not negative; raises any other with the line that the record names.
std::int32_t checked(std::int32_t status, int line) {
    if (status < 0)
        zoerr::raise(status, {kFile, line, nZOQUIL000::kComponent, "l_MacroStatus"});
    return status;
}

// Of a bus: as many as domain 0 has addresses.
constexpr std::uint32_t kMostFunctions = 0x10000;

// "Not found" is an answer; every other negative status raises.
std::int32_t checkedLookup(std::int32_t status, std::uint32_t& bridge, int line) {
    if (status != kPciBrdErrNotFound)
        return checked(status, line);
    bridge = kNoHandle;
    return status;
}

// Asks for the count, then for the list. `ask` takes an array (null for the count) and the count.
// The list keeps the length that the first answer announced, whatever the second one says.
template <typename List, typename Ask>
std::int32_t readList(List& list, Ask ask, int lineOfFirstCall, int lineOfSecondCall) {
    std::uint32_t count = 0;
    const std::int32_t first = ask(nullptr, &count);
    if (first != kPciBrdErrBufferTooSmall)
        return checked(first, lineOfFirstCall);
    List fresh = zeroedList<List>(count);
    const std::int32_t second =
        checked(ask(fresh.empty() ? nullptr : fresh.data(), &count), lineOfSecondCall);
    list = std::move(fresh);
    return second;
}

} // namespace

cPciBrdWrapper_ex::~cPciBrdWrapper_ex() {
    if (sessionOpen)
        cPciBrdWrapper_ex::CloseSession();
}

std::int32_t cPciBrdWrapper_ex::OpenSession(std::uint32_t openOption) {
    if (sessionOpen)
        CloseSession();
    const std::int32_t status = checked(dynLib.OpenSession(openOption, &session), 67);
    sessionOpen = 1;
    return status;
}

std::int32_t cPciBrdWrapper_ex::CloseSession() {
    const std::int32_t status = dynLib.CloseSession(session);
    session = kNoHandle;
    sessionOpen = 0;
    return status;
}

std::int32_t cPciBrdWrapper_ex::FindBridgesByPciIds(const tPciIds& ids, tBridgeList& bridges) {
    const auto ask = [&](std::uint32_t* array, std::uint32_t* count) {
        return dynLib.FindBridgesByPciIds(session, ids.vendor, ids.device, ids.subsystemVendor,
                                          ids.subsystem, array, count);
    };
    return readList(bridges, ask, 129, 123);
}

std::int32_t cPciBrdWrapper_ex::FindBridgeByAddress(std::uint8_t bus, std::uint8_t device,
                                                    std::uint8_t function, std::uint32_t& bridge) {
    return checkedLookup(dynLib.FindBridgeByAddress(session, bus, device, function, &bridge),
                         bridge, 151);
}

std::int32_t cPciBrdWrapper_ex::FindBridgeBySlotPath(const cSlotPath& path, std::uint32_t& bridge) {
    return checkedLookup(dynLib.FindBridgeBySlotPath(session, path, &bridge), bridge, 173);
}

std::int32_t cPciBrdWrapper_ex::FindParentBridgeForBus(std::uint8_t bus, std::uint32_t& bridge) {
    return checkedLookup(dynLib.FindParentBridgeForBus(session, bus, &bridge), bridge, 195);
}

std::int32_t cPciBrdWrapper_ex::GetBridgeParent(std::uint32_t bridge, std::uint32_t& parent) {
    return checkedLookup(dynLib.GetBridgeParent(session, bridge, &parent), parent, 217);
}

std::int32_t cPciBrdWrapper_ex::GetBridgeChildren(std::uint32_t bridge, tBridgeList& bridges) {
    const auto ask = [&](std::uint32_t* array, std::uint32_t* count) {
        return dynLib.GetBridgeChildren(session, bridge, array, count);
    };
    return readList(bridges, ask, 259, 253);
}

std::int32_t cPciBrdWrapper_ex::GetBusChildren(std::uint8_t bus, tBridgeList& bridges) {
    const auto ask = [&](std::uint32_t* array, std::uint32_t* count) {
        return dynLib.GetBusChildren(session, bus, array, count);
    };
    return readList(bridges, ask, 297, 291);
}

std::int32_t cPciBrdWrapper_ex::GetRootBuses(tBusList& buses) {
    const auto ask = [&](std::uint8_t* array, std::uint32_t* count) {
        return dynLib.GetRootBuses(session, array, count);
    };
    return readList(buses, ask, 332, 326);
}

std::int32_t cPciBrdWrapper_ex::GetBridgeAddress(std::uint32_t bridge, std::uint8_t* bus,
                                                 std::uint8_t* device, std::uint8_t* function) {
    return checked(dynLib.GetBridgeAddress(session, bridge, bus, device, function), 351);
}

std::int32_t cPciBrdWrapper_ex::GetBridgeSlotPath(std::uint32_t bridge, cSlotPath& path) {
    return checked(dynLib.GetBridgeSlotPath(session, bridge, path), 365);
}

std::int32_t cPciBrdWrapper_ex::GetBridgeIds(std::uint32_t bridge, std::uint16_t* vendor,
                                             std::uint16_t* device, std::uint16_t* subsystemVendor,
                                             std::uint16_t* subsystem) {
    return checked(dynLib.GetBridgeIds(session, bridge, vendor, device, subsystemVendor, subsystem),
                   385);
}

std::int32_t cPciBrdWrapper_ex::SetAttributeU32(std::uint32_t bridge, std::uint32_t attribute,
                                                std::uint32_t value) {
    return checked(dynLib.SetAttributeU32(session, bridge, attribute, value), 401);
}

std::int32_t cPciBrdWrapper_ex::GetAttributeU32(std::uint32_t bridge, std::uint32_t attribute,
                                                std::uint32_t& value) {
    return checked(dynLib.GetAttributeU32(session, bridge, attribute, &value), 417);
}

std::int32_t cPciBrdWrapper_ex::OpenBridge(std::uint32_t bridge) {
    return checked(dynLib.OpenBridge(session, bridge), 429);
}

std::int32_t cPciBrdWrapper_ex::CloseBridge(std::uint32_t bridge) {
    return dynLib.CloseBridge(session, bridge);
}

std::int32_t cPciBrdWrapper_ex::EepromUpdate(std::uint32_t bridge, std::uint16_t first,
                                             std::uint16_t second, std::uint32_t third,
                                             std::uint32_t fourth, std::uint32_t fifth,
                                             void* data) {
    return checked(dynLib.EepromUpdate(session, bridge, first, second, third, fourth, fifth, data),
                   463);
}

std::optional<std::vector<pcibus::PciFunction>> cPciBrdWrapper_ex::SessionFunctions() {
    std::uint32_t count = 0;
    if (sessionOpen == 0 ||
        dynLib.GetFunctions(session, nullptr, &count) != kPciBrdErrBufferTooSmall ||
        count > kMostFunctions)
        return std::nullopt;
    std::vector<tZoPciBrdFunction> listed(count);
    if (dynLib.GetFunctions(session, listed.data(), &count) < 0 || count != listed.size())
        return std::nullopt;
    std::vector<pcibus::PciFunction> functions;
    functions.reserve(listed.size());
    for (const tZoPciBrdFunction& each : listed) {
        pcibus::PciFunction function;
        function.bus = static_cast<std::uint8_t>(each.handle >> 8);
        const auto hop = static_cast<std::uint8_t>(each.handle);
        function.device = pcibus::deviceOfHop(hop);
        function.function = pcibus::functionOfHop(hop);
        function.headerType = each.headerType;
        function.vendorId = each.vendor;
        function.deviceId = each.device;
        function.subsystemVendorId = each.subsystemVendor;
        function.subsystemId = each.subsystem;
        function.secondaryBus = each.secondaryBus;
        function.subordinateBus = each.subordinateBus;
        function.linkWidth = each.linkWidth;
        function.linkSpeed = each.linkSpeed;
        functions.push_back(function);
    }
    return functions;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0
