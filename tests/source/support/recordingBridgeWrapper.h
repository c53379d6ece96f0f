// A bridge wrapper over a bus that a test builds. It notes every call, fails the one that it is
// told to fail, and watches over its user: outside a session nothing may be asked, a link is read
// of opened bridges only, and whoever opens a bridge closes it.
#pragma once

#include "pciBrdWrapper/iPciBrdWrapper_ex.h"
#include "pcibus/bus.h"
#include "tests/support/busBuilder.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace testsupport {

// What a call that is told to fail raises or returns unless the test says otherwise.
inline constexpr std::int32_t kBridgeFault = -313007;
// What the library says to a handle that is none.
inline constexpr std::int32_t kBridgeErrBadArgument = -313001;

class RecordingBridgeWrapper
    : public nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0::iPciBrdWrapper_ex {
public:
    using tPciIds = nZoTavManagerPciPlugin_15_0::tPciIds;
    using tBridgeList = nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0::tBridgeList;
    using tBusList = nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0::tBusList;

    explicit RecordingBridgeWrapper(const BusBuilder& machine);
    // Fails the test when a bridge is still open.
    ~RecordingBridgeWrapper() override;
    RecordingBridgeWrapper(const RecordingBridgeWrapper&) = delete;
    RecordingBridgeWrapper& operator=(const RecordingBridgeWrapper&) = delete;

    // One line a call, such as "FindBridgeBySlotPath MR00:08,00,E0", "GetBridgeAddress 01:00.0 bdf"
    // (which of bus, device and function were asked for), "GetAttributeU32 02:01.0 20000300".
    [[nodiscard]] const std::vector<std::string>& calls() const { return calls_; }
    void forgetCalls() { calls_.clear(); }

    // Of the calls from the first one noted, counted from 1. It raises `status`, or returns it
    // where the wrapper never raises; what it should do it does not, except that it closes.
    void failCall(std::size_t nth, std::int32_t status = kBridgeFault);
    [[nodiscard]] bool hasFailed() const { return failed_; }

    // Replaces what the bus says.
    void setAttribute(std::uint32_t bridge, std::uint32_t attribute, std::uint32_t value);

    std::int32_t OpenSession(std::uint32_t openOption) override;
    std::int32_t CloseSession() override;
    [[nodiscard]] std::uint32_t IsSessionOpen() const override { return sessionOpen_ ? 1 : 0; }
    std::int32_t FindBridgesByPciIds(const tPciIds& ids, tBridgeList& bridges) override;
    std::int32_t FindBridgeBySlotPath(const cSlotPath& path, std::uint32_t& bridge) override;
    std::int32_t FindParentBridgeForBus(std::uint8_t bus, std::uint32_t& bridge) override;
    std::int32_t GetBridgeAddress(std::uint32_t bridge, std::uint8_t* bus, std::uint8_t* device,
                                  std::uint8_t* function) override;
    std::int32_t GetBridgeSlotPath(std::uint32_t bridge, cSlotPath& path) override;
    std::int32_t GetAttributeU32(std::uint32_t bridge, std::uint32_t attribute,
                                 std::uint32_t& value) override;
    std::int32_t OpenBridge(std::uint32_t bridge) override;
    std::int32_t CloseBridge(std::uint32_t bridge) override;

    // The plug-in has no need of these; each fails the test.
    std::int32_t FindBridgeByAddress(std::uint8_t, std::uint8_t, std::uint8_t,
                                     std::uint32_t&) override;
    std::int32_t GetBridgeParent(std::uint32_t, std::uint32_t&) override;
    std::int32_t GetBridgeChildren(std::uint32_t, tBridgeList&) override;
    std::int32_t GetBusChildren(std::uint8_t, tBridgeList&) override;
    std::int32_t GetRootBuses(tBusList&) override;
    std::int32_t GetBridgeIds(std::uint32_t, std::uint16_t*, std::uint16_t*, std::uint16_t*,
                              std::uint16_t*) override;
    std::int32_t SetAttributeU32(std::uint32_t, std::uint32_t, std::uint32_t) override;
    std::int32_t EepromUpdate(std::uint32_t, std::uint16_t, std::uint16_t, std::uint32_t,
                              std::uint32_t, std::uint32_t, void*) override;

private:
    // Notes a call; the status that it has to end with.
    std::int32_t note(std::string call);
    // The same for calls that need a session and raise when they fail.
    void noteInSession(std::string call);
    const pcibus::PciFunction& bridgeAt(std::uint32_t bridge) const;

    pcibus::Bus bus_;
    std::vector<std::string> calls_;
    std::size_t failingCall_ = 0; // 0: none
    std::int32_t failingStatus_ = 0;
    bool failed_ = false;
    bool sessionOpen_ = false;
    std::multiset<std::uint32_t> openBridges_;
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> attributes_;
};

// How calls and tests write a handle: "01:00.0", or "none".
std::string handleText(std::uint32_t bridge);

// The identifiers as the plug-in takes them.
nZoTavManagerPciPlugin_15_0::tPciIds pciIds(const Ids& ids);

} // namespace testsupport
