// A bridge library that answers at random: statuses, counts, handles and texts, other ones each
// time, between honest answers that let its user get further.
#include "pciBrdWrapper/bridgeLibrary.h"
#include "platform/dynamicLibrary.h"
#include "tests/hostile/bridge/chance.h"
#include "tests/hostile/bridge/control.h"
#include "zopcibrd/zopcibrd.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace library = nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;
using hostilebridge::Chance;
using hostilebridge::Control;
using library::kBridgeFunctionCount;
using library::kBridgeSymbols;
using library::kNoHandle;
using F = library::BridgeFunction;

constexpr std::int32_t kBadHandle = -313001;
// Of an announced list or text, no more than this is ever written.
constexpr std::size_t kMostHandles = 70'000;
constexpr std::size_t kMostText = std::size_t{1} << 16;

Control control;
Chance chance(control.random);

[[noreturn]] void giveUp(const char* reason) {
    std::fprintf(stderr, "hostile bridge library, seed %llu: %s\n",
                 static_cast<unsigned long long>(control.seed), reason);
    std::abort();
}

// The honest library, its session, and the bridges that it has told of.
class Behind {
public:
    template <typename... Arguments>
    std::int32_t call(F function, Arguments... arguments) {
        load();
        using Target = std::int32_t (*)(Arguments...);
        return reinterpret_cast<Target>(functions_[static_cast<std::size_t>(function)])(
            arguments...);
    }

    // One for all: the bus does not change.
    std::uint32_t session() {
        if (session_ == kNoHandle)
            call(F::OpenSession, std::uint32_t{0}, &session_);
        return session_;
    }

    void remember(const std::uint32_t* handles, std::size_t count) {
        if (count != 0)
            handles_.assign(handles, handles + count);
    }
    void forgetBridges() { handles_.clear(); }
    // The bridge that stands for one that is none, always the same; none before any was told of.
    std::uint32_t standIn(std::uint32_t asked) {
        return handles_.empty() ? kNoHandle : handles_[asked % handles_.size()];
    }

private:
    void load() {
        if (library_.loaded())
            return;
        if (!library_.load(control.behind.c_str()))
            giveUp(library_.failureText().c_str());
        for (std::size_t i = 0; i < kBridgeFunctionCount; ++i) {
            functions_[i] = library_.symbol(kBridgeSymbols[i].name);
            if (functions_[i] == nullptr)
                giveUp(library_.failureText().c_str());
        }
    }

    platform::DynamicLibrary library_;
    void* functions_[kBridgeFunctionCount] = {};
    std::uint32_t session_ = kNoHandle;
    std::vector<std::uint32_t> handles_;
};
Behind behind;

// Counts the call; whether its answer is to be an honest one.
bool isHonest(F function) {
    if (++control.calls > control.mostCalls)
        giveUp("more calls than one initialize can need");
    // Whoever lied about a length is likely to lie about what it has.
    if (std::exchange(control.announcedFalsely, false))
        return chance.oneIn(8);
    switch (control.manner) {
    case hostilebridge::Manner::everywhere:
        return !chance.percent(control.lies);
    case hostilebridge::Manner::oneFunction:
        return static_cast<unsigned>(function) != control.liar || chance.oneIn(2);
    case hostilebridge::Manner::once:
        break;
    }
    return control.calls != control.lyingCall;
}

// A bridge that there is, the same one as asked for, a cleared or an absent one, or none of these.
std::uint32_t handle(std::uint32_t asked) {
    switch (chance.below(6)) {
    case 0:
        return asked;
    case 1:
        return 0;
    case 2:
        return kNoHandle;
    case 3:
        return static_cast<std::uint32_t>(chance.number());
    default:
        return behind.standIn(static_cast<std::uint32_t>(chance.number()));
    }
}

template <typename T>
void put(T* output, std::uint32_t value) {
    if (output != nullptr && !chance.oneIn(4))
        *output = static_cast<T>(value);
}

// An honest answer about a bridge; a handle that is none stands for one of the others.
template <typename... Arguments>
std::int32_t aboutBridge(F function, std::uint32_t bridge, Arguments... arguments) {
    const std::int32_t status = behind.call(function, behind.session(), bridge, arguments...);
    return status == kBadHandle
               ? behind.call(function, behind.session(), behind.standIn(bridge), arguments...)
               : status;
}

template <typename Handle>
std::int32_t writeList(Handle* array, std::uint32_t* count) {
    const std::size_t room = std::min<std::size_t>(*count, kMostHandles);
    const std::uint32_t first = handle(0);
    const std::uint32_t step = chance.below(3); // all equal, or in a row, or in steps
    for (std::size_t i = 0; i < room; ++i)
        array[i] = static_cast<Handle>(chance.oneIn(8) ? handle(first)
                                                       : first + step * static_cast<unsigned>(i));
    if (chance.oneIn(2))
        *count = chance.count();
    return chance.oneIn(2) ? 0 : chance.status();
}

template <typename Handle>
std::int32_t list(Handle* array, std::uint32_t* count) {
    if (chance.oneIn(4))
        return chance.status();
    if (array != nullptr)
        return writeList(array, count);
    *count = chance.count();
    control.announcedFalsely = true;
    return chance.oneIn(8) ? chance.status() : library::kPciBrdErrBufferTooSmall;
}

std::int32_t writeText(char* text, std::uint32_t* size) {
    const std::size_t room = std::min<std::size_t>(*size, kMostText);
    const char* const pattern = chance.oneOf({"MR00:00,E0,", "E0,", "%n%s", ",", "F", "MRFF:", ""});
    std::string part = pattern;
    if (part.empty() || chance.oneIn(8))
        part.push_back(static_cast<char>(chance.number()));
    for (std::size_t i = 0; i < room; ++i)
        text[i] = part[i % part.size()];
    if (room != 0 && chance.oneIn(2)) // else it has no end
        text[chance.below(room)] = '\0';
    if (chance.oneIn(2))
        *size = chance.count();
    return chance.oneIn(2) ? 0 : chance.status();
}

std::int32_t look(std::uint32_t asked, std::uint32_t* bridge) {
    put(bridge, handle(asked));
    return chance.oneIn(2) ? 0 : chance.status();
}

} // namespace

extern "C" Control* HostileBridge_Control();
extern "C" Control* HostileBridge_Control() {
    return &control;
}

std::int32_t ZoPciBrd_OpenSession(std::uint32_t, std::uint32_t* session) {
    behind.forgetBridges();
    const bool honest = isHonest(F::OpenSession);
    control.sessionStatus = honest || chance.oneIn(2) ? 0 : chance.status();
    put(session, chance.number32());
    return control.sessionStatus;
}

std::int32_t ZoPciBrd_CloseSession(std::uint32_t) {
    return isHonest(F::CloseSession) ? 0 : chance.status();
}

std::int32_t ZoPciBrd_FindBridgesByPciIds(std::uint32_t, std::uint16_t vendor, std::uint16_t device,
                                          std::uint16_t subsystemVendor, std::uint16_t subsystem,
                                          std::uint32_t* bridges, std::uint32_t* count) {
    if (!isHonest(F::FindBridgesByPciIds))
        return list(bridges, count);
    const std::int32_t status = behind.call(F::FindBridgesByPciIds, behind.session(), vendor,
                                            device, subsystemVendor, subsystem, bridges, count);
    if (status == 0 && bridges != nullptr)
        behind.remember(bridges, *count);
    return status;
}

std::int32_t ZoPciBrd_FindBridgeByAddress(std::uint32_t, std::uint8_t bus, std::uint8_t device,
                                          std::uint8_t function, std::uint32_t* bridge) {
    return isHonest(F::FindBridgeByAddress) ? behind.call(F::FindBridgeByAddress, behind.session(),
                                                          bus, device, function, bridge)
                                            : look(0, bridge);
}

std::int32_t ZoPciBrd_FindBridgeBySlotPath(std::uint32_t, const char* slotPath,
                                           std::uint32_t* bridge) {
    return isHonest(F::FindBridgeBySlotPath)
               ? behind.call(F::FindBridgeBySlotPath, behind.session(), slotPath, bridge)
               : look(0, bridge);
}

std::int32_t ZoPciBrd_FindParentBridgeForBus(std::uint32_t, std::uint8_t bus,
                                             std::uint32_t* bridge) {
    return isHonest(F::FindParentBridgeForBus)
               ? behind.call(F::FindParentBridgeForBus, behind.session(), bus, bridge)
               : look(0, bridge);
}

std::int32_t ZoPciBrd_GetBridgeParent(std::uint32_t, std::uint32_t bridge, std::uint32_t* parent) {
    return isHonest(F::GetBridgeParent) ? aboutBridge(F::GetBridgeParent, bridge, parent)
                                        : look(bridge, parent);
}

std::int32_t ZoPciBrd_GetBridgeChildren(std::uint32_t, std::uint32_t bridge, std::uint32_t* bridges,
                                        std::uint32_t* count) {
    return isHonest(F::GetBridgeChildren)
               ? aboutBridge(F::GetBridgeChildren, bridge, bridges, count)
               : list(bridges, count);
}

std::int32_t ZoPciBrd_GetBusChildren(std::uint32_t, std::uint8_t bus, std::uint32_t* bridges,
                                     std::uint32_t* count) {
    return isHonest(F::GetBusChildren)
               ? behind.call(F::GetBusChildren, behind.session(), bus, bridges, count)
               : list(bridges, count);
}

std::int32_t ZoPciBrd_GetRootBuses(std::uint32_t, std::uint8_t* buses, std::uint32_t* count) {
    return isHonest(F::GetRootBuses) ? behind.call(F::GetRootBuses, behind.session(), buses, count)
                                     : list(buses, count);
}

std::int32_t ZoPciBrd_GetBridgeAddress(std::uint32_t, std::uint32_t bridge, std::uint8_t* bus,
                                       std::uint8_t* device, std::uint8_t* function) {
    if (isHonest(F::GetBridgeAddress))
        return aboutBridge(F::GetBridgeAddress, bridge, bus, device, function);
    for (std::uint8_t* const output : {bus, device, function})
        put(output, chance.number32());
    return chance.oneIn(2) ? 0 : chance.status();
}

std::int32_t ZoPciBrd_GetBridgeSlotPath(std::uint32_t, std::uint32_t bridge, char* text,
                                        std::uint32_t* size) {
    if (isHonest(F::GetBridgeSlotPath))
        return aboutBridge(F::GetBridgeSlotPath, bridge, text, size);
    if (chance.oneIn(4))
        return chance.status();
    if (text != nullptr)
        return writeText(text, size);
    *size = chance.count();
    control.announcedFalsely = true;
    return chance.oneIn(8) ? chance.status() : library::kPciBrdErrBufferTooSmall;
}

std::int32_t ZoPciBrd_GetBridgeIds(std::uint32_t, std::uint32_t bridge, std::uint16_t* vendor,
                                   std::uint16_t* device, std::uint16_t* subsystemVendor,
                                   std::uint16_t* subsystem) {
    if (isHonest(F::GetBridgeIds))
        return aboutBridge(F::GetBridgeIds, bridge, vendor, device, subsystemVendor, subsystem);
    for (std::uint16_t* const output : {vendor, device, subsystemVendor, subsystem})
        put(output, chance.number32());
    return chance.status();
}

std::int32_t ZoPciBrd_SetAttributeU32(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {
    return isHonest(F::SetAttributeU32) ? library::kPciBrdErrUnavailable : chance.status();
}

std::int32_t ZoPciBrd_GetAttributeU32(std::uint32_t, std::uint32_t bridge, std::uint32_t attribute,
                                      std::uint32_t* value) {
    if (isHonest(F::GetAttributeU32))
        return aboutBridge(F::GetAttributeU32, bridge, attribute, value);
    put(value, chance.number32());
    return chance.oneIn(2) ? 0 : chance.status();
}

std::int32_t ZoPciBrd_OpenBridge(std::uint32_t, std::uint32_t) {
    return isHonest(F::OpenBridge) ? 0 : chance.status();
}

std::int32_t ZoPciBrd_CloseBridge(std::uint32_t, std::uint32_t) {
    return isHonest(F::CloseBridge) ? 0 : chance.status();
}

std::int32_t ZoPciBrd_EepromUpdate(std::uint32_t, std::uint32_t, std::uint16_t, std::uint16_t,
                                   std::uint32_t, std::uint32_t, std::uint32_t, void*) {
    return isHonest(F::EepromUpdate) ? library::kPciBrdErrUnavailable : chance.status();
}
