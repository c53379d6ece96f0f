#include "pciBrdWrapper/cPciBrdDynLib.h"

#include "pciBrdWrapper/zeroedAllocator.h"
#include "quil/memberWriter.h"
#include "quil/setError.h"

#include <algorithm>
#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0 {

namespace {

using nZOQUIL000::JsonMember;
using nZOQUIL000::kComponent;
using nZOQUIL000::MemberWriter;
using nZOQUIL000::tErrorSite;
using nZOQUIL000::tErrorStatus;

constexpr tErrorSite kLoaderSite{"zodynlib\\dynload", 49, kComponent, "zoquilerr_invalidParameter"};
constexpr tErrorSite kOutOfMemorySite{"zodynlib\\dynload", 49, kComponent, "zoquilerr_memoryFull"};
constexpr tErrorSite kUnboundSite{"dep_mirror\\deps\\pciBrdWrapperMock\\includes\\cpcibrddynlib",
                                  195, kComponent, nullptr};

constexpr const char* kLibrary = "zopcibrd";

// Reports what the loader could not do, `debug`, to which object, and the system's reason. The
// status holds no error yet.
void setLoaderError(tErrorStatus& status, const JsonMember& debug, const JsonMember& object,
                    const platform::DynamicLibrary& library) {
    nZOQUIL000::setError(status, kDynLibErrLoadFailed, kLoaderSite);
    MemberWriter writer(status);
    writer.append({"zodynlib_debug", {debug, object}});
    const JsonMember api{"api", platform::systemCodeOrigin()};
    const JsonMember code{"code", library.failure()};
    const JsonMember words{"string", library.failureText().c_str()};
    const bool hasCode = library.failure() != platform::kNoSystemError;
    const bool hasWords = !library.failureText().empty();
    if (hasCode && hasWords)
        writer.append({"internal_error", {api, code, words}});
    else if (hasCode)
        writer.append({"internal_error", {api, code}});
    else if (hasWords)
        writer.append({"internal_error", {api, words}});
    else
        writer.append({"internal_error", {api}});
}

} // namespace

cPciBrdDynLib::cPciBrdDynLib(tErrorStatus& status) {
    if (status.failed())
        return;
    try {
        const std::string name = platform::libraryFileName(kLibrary);
        if (!module.load(name.c_str()))
            setLoaderError(status, {"debug", "failed to zodynlib_load library"},
                           {"path", name.c_str()}, module);
        bindAll(status);
    } catch (const std::bad_alloc&) {
        nZOQUIL000::setError(status, kDynLibErrOutOfMemory, kOutOfMemorySite);
    }
}

void cPciBrdDynLib::bindAll(tErrorStatus& status) {
    for (std::size_t i = 0; i < kBridgeFunctionCount && !status.failed(); ++i) {
        functions_[i] = module.symbol(kBridgeSymbols[i].name);
        if (!functions_[i])
            setLoaderError(status, {"debug", "failed to get symbol"},
                           {"zodynlib_symbol", kBridgeSymbols[i].name}, module);
    }
    // A faithful loader leaves nothing for this guard to find.
    if (!status.failed() &&
        std::find(functions_.begin(), functions_.end(), nullptr) != functions_.end())
        nZOQUIL000::setSiteOnlyError(status, kUnboundSite);
}

template <typename... Arguments>
std::int32_t cPciBrdDynLib::call(BridgeFunction function, Arguments... arguments) const {
    const auto index = static_cast<std::size_t>(function);
    if (!functions_[index])
        return kBridgeSymbols[index].whenUnbound;
    using Target = std::int32_t(ZOPCIBRD_CALL*)(Arguments...);
    return reinterpret_cast<Target>(functions_[index])(arguments...);
}

std::int32_t cPciBrdDynLib::OpenSession(std::uint32_t openOption, std::uint32_t* session) {
    return call(BridgeFunction::OpenSession, openOption, session);
}

std::int32_t cPciBrdDynLib::CloseSession(std::uint32_t session) {
    return call(BridgeFunction::CloseSession, session);
}

std::int32_t cPciBrdDynLib::FindBridgesByPciIds(std::uint32_t session, std::uint16_t vendor,
                                                std::uint16_t device, std::uint16_t subsystemVendor,
                                                std::uint16_t subsystem, std::uint32_t* bridges,
                                                std::uint32_t* count) {
    return call(BridgeFunction::FindBridgesByPciIds, session, vendor, device, subsystemVendor,
                subsystem, bridges, count);
}

std::int32_t cPciBrdDynLib::FindBridgeByAddress(std::uint32_t session, std::uint8_t bus,
                                                std::uint8_t device, std::uint8_t function,
                                                std::uint32_t* bridge) {
    return call(BridgeFunction::FindBridgeByAddress, session, bus, device, function, bridge);
}

std::int32_t cPciBrdDynLib::FindBridgeBySlotPath(std::uint32_t session, const cSlotPath& path,
                                                 std::uint32_t* bridge) {
    tErrorStatus status;
    std::string text;
    path.FormatMachineText(text, status);
    if (status.failed())
        return status.code;
    return call(BridgeFunction::FindBridgeBySlotPath, session, text.c_str(), bridge);
}

std::int32_t cPciBrdDynLib::FindParentBridgeForBus(std::uint32_t session, std::uint8_t bus,
                                                   std::uint32_t* bridge) {
    return call(BridgeFunction::FindParentBridgeForBus, session, bus, bridge);
}

std::int32_t cPciBrdDynLib::GetBridgeParent(std::uint32_t session, std::uint32_t bridge,
                                            std::uint32_t* parent) {
    return call(BridgeFunction::GetBridgeParent, session, bridge, parent);
}

std::int32_t cPciBrdDynLib::GetBridgeChildren(std::uint32_t session, std::uint32_t bridge,
                                              std::uint32_t* bridges, std::uint32_t* count) {
    return call(BridgeFunction::GetBridgeChildren, session, bridge, bridges, count);
}

std::int32_t cPciBrdDynLib::GetBusChildren(std::uint32_t session, std::uint8_t bus,
                                           std::uint32_t* bridges, std::uint32_t* count) {
    return call(BridgeFunction::GetBusChildren, session, bus, bridges, count);
}

std::int32_t cPciBrdDynLib::GetRootBuses(std::uint32_t session, std::uint8_t* buses,
                                         std::uint32_t* count) {
    return call(BridgeFunction::GetRootBuses, session, buses, count);
}

std::int32_t cPciBrdDynLib::GetBridgeAddress(std::uint32_t session, std::uint32_t bridge,
                                             std::uint8_t* bus, std::uint8_t* device,
                                             std::uint8_t* function) {
    return call(BridgeFunction::GetBridgeAddress, session, bridge, bus, device, function);
}

std::int32_t cPciBrdDynLib::GetBridgeSlotPath(std::uint32_t session, std::uint32_t bridge,
                                              cSlotPath& path) {
    std::uint32_t size = 0;
    std::int32_t answer = call(BridgeFunction::GetBridgeSlotPath, session, bridge,
                               static_cast<char*>(nullptr), &size);
    if (answer != kPciBrdErrBufferTooSmall)
        return answer;
    const std::uint32_t capacity = size;
    const boost::shared_ptr<char> text(ZeroedAllocator<char>().allocate(capacity), &std::free);
    answer = call(BridgeFunction::GetBridgeSlotPath, session, bridge, text.get(), &size);
    if (answer < 0)
        return answer;
    // The terminating zero is looked for within the buffer only; what the library did not write is
    // zero.
    const std::string_view whole(text.get(), capacity);
    tErrorStatus status;
    path.ParseMachineText(whole.substr(0, whole.find('\0')), status);
    return status.code;
}

std::int32_t cPciBrdDynLib::GetBridgeIds(std::uint32_t session, std::uint32_t bridge,
                                         std::uint16_t* vendor, std::uint16_t* device,
                                         std::uint16_t* subsystemVendor, std::uint16_t* subsystem) {
    return call(BridgeFunction::GetBridgeIds, session, bridge, vendor, device, subsystemVendor,
                subsystem);
}

std::int32_t cPciBrdDynLib::SetAttributeU32(std::uint32_t session, std::uint32_t bridge,
                                            std::uint32_t attribute, std::uint32_t value) {
    return call(BridgeFunction::SetAttributeU32, session, bridge, attribute, value);
}

std::int32_t cPciBrdDynLib::GetAttributeU32(std::uint32_t session, std::uint32_t bridge,
                                            std::uint32_t attribute, std::uint32_t* value) {
    return call(BridgeFunction::GetAttributeU32, session, bridge, attribute, value);
}

std::int32_t cPciBrdDynLib::OpenBridge(std::uint32_t session, std::uint32_t bridge) {
    return call(BridgeFunction::OpenBridge, session, bridge);
}

std::int32_t cPciBrdDynLib::CloseBridge(std::uint32_t session, std::uint32_t bridge) {
    return call(BridgeFunction::CloseBridge, session, bridge);
}

std::int32_t cPciBrdDynLib::EepromUpdate(std::uint32_t session, std::uint32_t bridge,
                                         std::uint16_t first, std::uint16_t second,
                                         std::uint32_t third, std::uint32_t fourth,
                                         std::uint32_t fifth, void* data) {
    return call(BridgeFunction::EepromUpdate, session, bridge, first, second, third, fourth, fifth,
                data);
}

std::int32_t cPciBrdDynLib::GetFunctions(std::uint32_t session, tZoPciBrdFunction* functions,
                                         std::uint32_t* count) {
    void* const function = module.loaded() ? module.symbol(kFunctionListSymbol) : nullptr;
    if (function == nullptr)
        return kPciBrdErrUnavailable;
    return reinterpret_cast<decltype(&ZoPciBrd_GetFunctions)>(function)(session, functions, count);
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0
