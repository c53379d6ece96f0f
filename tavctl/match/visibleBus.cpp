#include "tavctl/match/visibleBus.h"

#include "machine/machineDevices.h"
#include "platform/busLocation.h"
#include "platform/entryType.h"
#include "quil/systemStatus.h"
#include "quil/zoerr.h"
#include "source/exceptionStatus.h"
#include "tavctl/match/modelMatcher.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/progress.h"

#include <filesystem>
#include <optional>
#include <set>
#include <vector>

namespace tavctl {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using namespace nZoPciBrdWrapper_15_0;

pcibus::PciFunction readBridge(iPciBrdWrapper_ex& wrapper, std::uint32_t handle) {
    pcibus::PciFunction bridge;
    bridge.headerType = kHeaderTypeBridge;
    wrapper.GetBridgeAddress(handle, &bridge.bus, &bridge.device, &bridge.function);
    wrapper.GetBridgeIds(handle, &bridge.vendorId, &bridge.deviceId, &bridge.subsystemVendorId,
                         &bridge.subsystemId);
    std::uint32_t value = 0;
    wrapper.GetAttributeU32(handle, kAttributeSecondaryBus, value);
    bridge.secondaryBus = static_cast<std::uint8_t>(value);
    wrapper.OpenBridge(handle);
    wrapper.GetAttributeU32(handle, kAttributeLinkWidth, value);
    bridge.linkWidth = static_cast<std::uint8_t>(value);
    wrapper.GetAttributeU32(handle, kAttributeLinkSpeed, value);
    bridge.linkSpeed = static_cast<std::uint8_t>(value);
    wrapper.CloseBridge(handle);
    return bridge;
}

std::vector<pcibus::PciFunction> readBridges(iPciBrdWrapper_ex& wrapper) {
    std::vector<std::uint32_t> open;
    tBusList roots;
    wrapper.GetRootBuses(roots);
    for (const std::uint8_t root : roots) {
        tBridgeList bridges;
        wrapper.GetBusChildren(root, bridges);
        open.insert(open.end(), bridges.begin(), bridges.end());
    }
    std::vector<pcibus::PciFunction> functions;
    std::set<std::uint32_t> seen;
    while (!open.empty()) {
        const std::uint32_t handle = open.back();
        open.pop_back();
        if (!seen.insert(handle).second)
            continue;
        functions.push_back(readBridge(wrapper, handle));
        tBridgeList children;
        wrapper.GetBridgeChildren(handle, children);
        open.insert(open.end(), children.begin(), children.end());
    }
    return functions;
}

// The functions that the system lists and that are none of the bridges.
void addDevices(std::vector<pcibus::PciFunction>& functions) {
    std::set<std::uint32_t> known;
    for (const pcibus::PciFunction& bridge : functions)
        known.insert(bridge.handle());
    const auto devices = machine::makePciDevices();
    const platform::SystemCode code = devices->open();
    if (code != platform::kNoSystemError)
        throw FailureException({"list devices",
                                {},
                                platform::systemMessage(code),
                                nZOQUIL000::statusFromSystemCode(code),
                                {}});
    for (std::size_t index = 0; devices->has(index); ++index) {
        bool complete = true;
        const auto read = [&](const char* name) {
            const auto property = devices->readProperty(index, name);
            complete = complete && property.step == platform::PropertyRead::Step::done;
            return property.value;
        };
        const std::uint32_t busType = read("busType");
        pcibus::PciFunction function;
        function.bus = static_cast<std::uint8_t>(read("pciBusNumber"));
        function.device = static_cast<std::uint8_t>(read("pciDeviceNumber"));
        function.function = static_cast<std::uint8_t>(read("pciFunctionNumber"));
        function.vendorId = static_cast<std::uint16_t>(read("pciVendorID"));
        function.deviceId = static_cast<std::uint16_t>(read("pciDeviceID"));
        function.subsystemVendorId = static_cast<std::uint16_t>(read("pciSubsystemVendorID"));
        function.subsystemId = static_cast<std::uint16_t>(read("pciSubsystemID"));
        if (complete && busType == platform::kPciBusType && known.insert(function.handle()).second)
            functions.push_back(function);
    }
    devices->close();
}

} // namespace

pcibus::Bus busOfBridgeLibrary() {
    try {
        const MatchBus host = hostBus();
        host.wrapper->OpenSession(0);
        auto functions = readBridges(*host.wrapper);
        host.wrapper->CloseSession();
        addDevices(functions);
        return {std::move(functions), pcibus::addressText};
    } catch (const zoerr::Exception& exception) {
        throw FailureException(
            {"read the bus", "bridge library", {}, statusOfCurrentException(), exception.text()});
    } catch (const pcibus::BusError& error) {
        throw FailureException({"read the bus", "bridge library", error.what(), {}, {}});
    }
}

WholeBus machineBus() {
    const Progress progress("reading the bus");
    const std::optional<std::string> location = platform::busLocation();
    return location ? readWholeBus(*location) : wholeBusOf(busOfBridgeLibrary());
}

std::optional<WholeBus> wholeBusIfReadable() {
    if (const auto location = platform::busLocation()) {
        const auto type = platform::typeOfEntry(*location);
        if (type != std::filesystem::file_type::directory &&
            type != std::filesystem::file_type::regular)
            return std::nullopt;
    }
    try {
        return machineBus();
    } catch (const FailureException&) {
        return std::nullopt;
    }
}

} // namespace tavctl
