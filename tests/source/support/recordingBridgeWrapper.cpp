#include "tests/source/support/recordingBridgeWrapper.h"

#include "pcibus/position.h"
#include "quil/zoerr.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>

namespace testsupport {

namespace {

using nZoTavManagerPciPlugin_15_0::tPciIds;
namespace bridges = nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;

[[noreturn]] void raiseStatus(std::int32_t status) {
    zoerr::raise(status, nZOQUIL000::siteHere("recordingBridgeWrapper", "status"));
}

template <class... Values>
std::string formatted(const char* format, Values... values) {
    char text[96];
    const int length = std::snprintf(text, sizeof text, format, values...);
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof text)
        throw std::logic_error("text too long");
    return text;
}

std::string pathText(const nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cSlotPath& path) {
    nZOQUIL000::tErrorStatus status;
    std::string text;
    path.ToString(text, status);
    if (status.failed())
        throw std::logic_error("a slot path in error reached the bridge wrapper");
    return text;
}

} // namespace

std::string handleText(std::uint32_t bridge) {
    if (bridge == bridges::kNoHandle)
        return "none";
    return formatted("%02x:%02x.%x", bridge >> 8, bridge >> 3 & 31, bridge & 7);
}

tPciIds pciIds(const Ids& ids) {
    return {ids.vendor, ids.device, ids.subsystemVendor, ids.subsystem};
}

RecordingBridgeWrapper::RecordingBridgeWrapper(const BusBuilder& machine)
    : bus_(machine.functions(), [](const auto&) { return std::string("the built bus"); }) {}

RecordingBridgeWrapper::~RecordingBridgeWrapper() {
    for (const std::uint32_t bridge : openBridges_)
        ADD_FAILURE() << "left open: " << handleText(bridge);
}

void RecordingBridgeWrapper::failCall(std::size_t nth, std::int32_t status) {
    if (nth == 0 || status >= 0)
        throw std::logic_error("calls are counted from 1, failures are negative");
    failingCall_ = nth;
    failingStatus_ = status;
}

void RecordingBridgeWrapper::setAttribute(std::uint32_t bridge, std::uint32_t attribute,
                                          std::uint32_t value) {
    if (bus_.findBridge(bridge) == nullptr)
        throw std::logic_error("no such bridge: " + handleText(bridge));
    attributes_[{bridge, attribute}] = value;
}

std::int32_t RecordingBridgeWrapper::note(std::string call) {
    calls_.push_back(std::move(call));
    if (calls_.size() != failingCall_)
        return 0;
    failed_ = true;
    return failingStatus_;
}

void RecordingBridgeWrapper::noteInSession(std::string call) {
    if (!sessionOpen_)
        ADD_FAILURE() << "outside a session: " << call;
    const std::int32_t status = note(std::move(call));
    if (status < 0)
        raiseStatus(status);
}

const pcibus::PciFunction& RecordingBridgeWrapper::bridgeAt(std::uint32_t bridge) const {
    const pcibus::PciFunction* const found = bus_.findBridge(bridge);
    if (found == nullptr)
        raiseStatus(kBridgeErrBadArgument);
    return *found;
}

std::int32_t RecordingBridgeWrapper::OpenSession(std::uint32_t openOption) {
    if (sessionOpen_)
        ADD_FAILURE() << "a session is open already";
    const std::int32_t status = note(formatted("OpenSession %u", openOption));
    if (status < 0)
        raiseStatus(status);
    sessionOpen_ = true;
    return 0;
}

std::int32_t RecordingBridgeWrapper::CloseSession() {
    if (!sessionOpen_)
        ADD_FAILURE() << "no session to close";
    sessionOpen_ = false;
    return note("CloseSession");
}

std::int32_t RecordingBridgeWrapper::FindBridgesByPciIds(const tPciIds& ids, tBridgeList& list) {
    noteInSession(formatted("FindBridgesByPciIds %04x:%04x:%04x:%04x", ids.vendor, ids.device,
                            ids.subsystemVendor, ids.subsystem));
    if (!list.empty())
        ADD_FAILURE() << "lists are handed in empty";
    const auto found =
        bus_.bridgesWithIds({ids.vendor, ids.device, ids.subsystemVendor, ids.subsystem});
    // Highest first: the order of the library's answers is nothing to rely on.
    list.assign(found.rbegin(), found.rend());
    return 0;
}

std::int32_t RecordingBridgeWrapper::FindBridgeBySlotPath(const cSlotPath& path,
                                                          std::uint32_t& bridge) {
    noteInSession("FindBridgeBySlotPath " + pathText(path));
    const std::vector<std::uint8_t> hops(path.hops.begin(), path.hops.end());
    const pcibus::PciFunction* const found = functionAt(bus_, path.rootBus, hops);
    const bool isBridge = found != nullptr && found->isBridge();
    bridge = isBridge ? found->handle() : bridges::kNoHandle;
    return isBridge ? 0 : bridges::kPciBrdErrNotFound;
}

std::int32_t RecordingBridgeWrapper::FindParentBridgeForBus(std::uint8_t bus,
                                                            std::uint32_t& bridge) {
    noteInSession(formatted("FindParentBridgeForBus %02x", static_cast<unsigned>(bus)));
    const pcibus::PciFunction* const found = bus_.parentOfBus(bus);
    bridge = found != nullptr ? found->handle() : bridges::kNoHandle;
    return found != nullptr ? 0 : bridges::kPciBrdErrNotFound;
}

std::int32_t RecordingBridgeWrapper::GetBridgeAddress(std::uint32_t bridge, std::uint8_t* bus,
                                                      std::uint8_t* device,
                                                      std::uint8_t* function) {
    noteInSession("GetBridgeAddress " + handleText(bridge) + " " + (bus ? "b" : "") +
                  (device ? "d" : "") + (function ? "f" : ""));
    const pcibus::PciFunction& found = bridgeAt(bridge);
    if (bus)
        *bus = found.bus;
    if (device)
        *device = found.device;
    if (function)
        *function = found.function;
    return 0;
}

std::int32_t RecordingBridgeWrapper::GetBridgeSlotPath(std::uint32_t bridge, cSlotPath& path) {
    noteInSession("GetBridgeSlotPath " + handleText(bridge));
    const pcibus::Position position = positionOf(bus_, bridgeAt(bridge));
    path.rootBus = position.rootBus;
    path.hops.assign(position.hops().begin(), position.hops().end());
    return 0;
}

std::int32_t RecordingBridgeWrapper::GetAttributeU32(std::uint32_t bridge, std::uint32_t attribute,
                                                     std::uint32_t& value) {
    noteInSession("GetAttributeU32 " + handleText(bridge) + formatted(" %08x", attribute));
    const pcibus::PciFunction& found = bridgeAt(bridge);
    if (attribute != bridges::kAttributeSecondaryBus && openBridges_.count(bridge) == 0)
        ADD_FAILURE() << "the link of a bridge that is not open: " << handleText(bridge);
    if (const auto replaced = attributes_.find({bridge, attribute}); replaced != attributes_.end())
        value = replaced->second;
    else if (attribute == bridges::kAttributeSecondaryBus)
        value = found.secondaryBus;
    else if (attribute == bridges::kAttributeLinkWidth)
        value = found.linkWidth;
    else if (attribute == bridges::kAttributeLinkSpeed)
        value = found.linkSpeed;
    else
        raiseStatus(kBridgeErrBadArgument);
    return 0;
}

std::int32_t RecordingBridgeWrapper::OpenBridge(std::uint32_t bridge) {
    noteInSession("OpenBridge " + handleText(bridge));
    bridgeAt(bridge);
    openBridges_.insert(bridge);
    return 0;
}

std::int32_t RecordingBridgeWrapper::CloseBridge(std::uint32_t bridge) {
    const auto open = openBridges_.find(bridge);
    if (open == openBridges_.end())
        ADD_FAILURE() << "not open: " << handleText(bridge);
    else
        openBridges_.erase(open);
    if (!sessionOpen_)
        ADD_FAILURE() << "closed after the session: " << handleText(bridge);
    try {
        return note("CloseBridge " + handleText(bridge));
    } catch (const std::bad_alloc&) { // closing never raises, so it goes unnoted
        return 0;
    }
}

namespace {

std::int32_t refuse(const char* operation) {
    ADD_FAILURE() << "the plug-in has no need of " << operation;
    return bridges::kPciBrdErrUnavailable;
}

} // namespace

std::int32_t RecordingBridgeWrapper::FindBridgeByAddress(std::uint8_t, std::uint8_t, std::uint8_t,
                                                         std::uint32_t&) {
    return refuse("FindBridgeByAddress");
}
std::int32_t RecordingBridgeWrapper::GetBridgeParent(std::uint32_t, std::uint32_t&) {
    return refuse("GetBridgeParent");
}
std::int32_t RecordingBridgeWrapper::GetBridgeChildren(std::uint32_t, tBridgeList&) {
    return refuse("GetBridgeChildren");
}
std::int32_t RecordingBridgeWrapper::GetBusChildren(std::uint8_t, tBridgeList&) {
    return refuse("GetBusChildren");
}
std::int32_t RecordingBridgeWrapper::GetRootBuses(tBusList&) {
    return refuse("GetRootBuses");
}
std::int32_t RecordingBridgeWrapper::GetBridgeIds(std::uint32_t, std::uint16_t*, std::uint16_t*,
                                                  std::uint16_t*, std::uint16_t*) {
    return refuse("GetBridgeIds");
}
std::int32_t RecordingBridgeWrapper::SetAttributeU32(std::uint32_t, std::uint32_t, std::uint32_t) {
    return refuse("SetAttributeU32");
}
std::int32_t RecordingBridgeWrapper::EepromUpdate(std::uint32_t, std::uint16_t, std::uint16_t,
                                                  std::uint32_t, std::uint32_t, std::uint32_t,
                                                  void*) {
    return refuse("EepromUpdate");
}

} // namespace testsupport
