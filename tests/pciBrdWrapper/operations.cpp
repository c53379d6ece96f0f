#include "tests/pciBrdWrapper/operations.h"

namespace operations {

namespace {

using F = BridgeFunction;
using Arguments = std::vector<std::uint64_t>;

std::uint64_t at(const void* address) {
    return reinterpret_cast<std::uintptr_t>(address);
}

constexpr std::uint16_t kVendor = 0x8086;
constexpr std::uint16_t kDevice = 0xFEDC;
constexpr std::uint16_t kSubsystemVendor = 0xABCD;
constexpr std::uint16_t kSubsystem = 0x9876;

template <typename List, typename Run>
std::int32_t runOnList(std::vector<std::uint32_t>& contents, const Run& run) {
    List list(0);
    for (const std::uint32_t element : contents)
        list.push_back(static_cast<typename List::value_type>(element));
    // Hands the contents back on every way out.
    struct HandBack {
        HandBack(const List& from, std::vector<std::uint32_t>& to) : from_(from), to_(to) {}
        ~HandBack() { to_.assign(from_.begin(), from_.end()); }
        HandBack(const HandBack&) = delete;
        HandBack& operator=(const HandBack&) = delete;
        const List& from_;
        std::vector<std::uint32_t>& to_;
    } const handBack(list, contents);
    return run(list);
}

} // namespace

Outputs::Outputs() {
    path.rootBus = 0x0A;
    path.hops = {0xE0, 0x01};
}

const std::vector<BindingOperation> kBinding = {
    {F::OpenSession,
     [](cPciBrdDynLib& library, Outputs& o) { return library.OpenSession(0xFFFFFFFE, &o.handle); },
     [](const Outputs& o) -> Arguments {
         return {0xFFFFFFFE, at(&o.handle)};
     }},
    {F::CloseSession,
     [](cPciBrdDynLib& library, Outputs&) { return library.CloseSession(kSession); },
     [](const Outputs&) -> Arguments { return {kSession}; }},
    {F::FindBridgesByPciIds,
     [](cPciBrdDynLib& library, Outputs& o) {
         return library.FindBridgesByPciIds(kSession, kVendor, kDevice, kSubsystemVendor,
                                            kSubsystem, o.array, &o.count);
     },
     [](const Outputs& o) -> Arguments {
         return {kSession,   kVendor,     kDevice,     kSubsystemVendor,
                 kSubsystem, at(o.array), at(&o.count)};
     }},
    {F::FindBridgeByAddress,
     [](cPciBrdDynLib& library, Outputs& o) {
         return library.FindBridgeByAddress(kSession, 0xFE, 0xFD, 0xFC, &o.handle);
     },
     [](const Outputs& o) -> Arguments {
         return {kSession, 0xFE, 0xFD, 0xFC, at(&o.handle)};
     }},
    {F::FindBridgeBySlotPath,
     [](cPciBrdDynLib& library, Outputs& o) {
         return library.FindBridgeBySlotPath(kSession, o.path, &o.handle);
     },
     [](const Outputs& o) -> Arguments {
         return {kSession, at(&o.handle)};
     }},
    {F::FindParentBridgeForBus,
     [](cPciBrdDynLib& library, Outputs& o) {
         return library.FindParentBridgeForBus(kSession, 0xFE, &o.handle);
     },
     [](const Outputs& o) -> Arguments {
         return {kSession, 0xFE, at(&o.handle)};
     }},
    {F::GetBridgeParent,
     [](cPciBrdDynLib& library, Outputs& o) {
         return library.GetBridgeParent(kSession, kBridge, &o.handle);
     },
     [](const Outputs& o) -> Arguments {
         return {kSession, kBridge, at(&o.handle)};
     }},
    {F::GetBridgeChildren,
     [](cPciBrdDynLib& library, Outputs& o) {
         return library.GetBridgeChildren(kSession, kBridge, o.array, &o.count);
     },
     [](const Outputs& o) -> Arguments {
         return {kSession, kBridge, at(o.array), at(&o.count)};
     }},
    {F::GetBusChildren,
     [](cPciBrdDynLib& library, Outputs& o) {
         return library.GetBusChildren(kSession, 0xFE, o.array, &o.count);
     },
     [](const Outputs& o) -> Arguments {
         return {kSession, 0xFE, at(o.array), at(&o.count)};
     }},
    {F::GetRootBuses,
     [](cPciBrdDynLib& library, Outputs& o) {
         return library.GetRootBuses(kSession, o.bytes, &o.count);
     },
     [](const Outputs& o) -> Arguments {
         return {kSession, at(o.bytes), at(&o.count)};
     }},
    {F::GetBridgeAddress,
     [](cPciBrdDynLib& library, Outputs& o) {
         return library.GetBridgeAddress(kSession, kBridge, &o.bytes[0], &o.bytes[1], &o.bytes[2]);
     },
     [](const Outputs& o) -> Arguments {
         return {kSession, kBridge, at(&o.bytes[0]), at(&o.bytes[1]), at(&o.bytes[2])};
     }},
    // The size query; the second call is looked at where its protocol is.
    {F::GetBridgeSlotPath,
     [](cPciBrdDynLib& library, Outputs& o) {
         return library.GetBridgeSlotPath(kSession, kBridge, o.path);
     },
     [](const Outputs&) -> Arguments {
         return {kSession, kBridge, 0};
     }},
    {F::GetBridgeIds,
     [](cPciBrdDynLib& library, Outputs& o) {
         return library.GetBridgeIds(kSession, kBridge, &o.words[0], &o.words[1], &o.words[2],
                                     &o.words[3]);
     },
     [](const Outputs& o) -> Arguments {
         return {kSession,        kBridge,         at(&o.words[0]),
                 at(&o.words[1]), at(&o.words[2]), at(&o.words[3])};
     }},
    {F::SetAttributeU32,
     [](cPciBrdDynLib& library, Outputs&) {
         return library.SetAttributeU32(kSession, kBridge, kAttributeLinkWidth, 0xFEDCBA98);
     },
     [](const Outputs&) -> Arguments {
         return {kSession, kBridge, kAttributeLinkWidth, 0xFEDCBA98};
     }},
    {F::GetAttributeU32,
     [](cPciBrdDynLib& library, Outputs& o) {
         return library.GetAttributeU32(kSession, kBridge, kAttributeSecondaryBus, &o.value);
     },
     [](const Outputs& o) -> Arguments {
         return {kSession, kBridge, kAttributeSecondaryBus, at(&o.value)};
     }},
    {F::OpenBridge,
     [](cPciBrdDynLib& library, Outputs&) { return library.OpenBridge(kSession, kBridge); },
     [](const Outputs&) -> Arguments {
         return {kSession, kBridge};
     }},
    {F::CloseBridge,
     [](cPciBrdDynLib& library, Outputs&) { return library.CloseBridge(kSession, kBridge); },
     [](const Outputs&) -> Arguments {
         return {kSession, kBridge};
     }},
    {F::EepromUpdate,
     [](cPciBrdDynLib& library, Outputs& o) {
         return library.EepromUpdate(kSession, kBridge, 0xFFF1, 0xFFF2, 0xFFFFFFF3, 0xFFFFFFF4,
                                     0xFFFFFFF5, &o.data);
     },
     [](const Outputs& o) -> Arguments {
         return {kSession,   kBridge,    0xFFF1,     0xFFF2,
                 0xFFFFFFF3, 0xFFFFFFF4, 0xFFFFFFF5, at(&o.data)};
     }},
};

const std::vector<WrapperOperation> kWrapper = {
    {F::OpenSession, 67,
     [](cPciBrdWrapper_ex& wrapper, Outputs&) { return wrapper.OpenSession(0xFFFFFFFE); },
     [](const Outputs&) -> Arguments { return {}; }},
    {F::CloseSession, 0,
     [](cPciBrdWrapper_ex& wrapper, Outputs&) { return wrapper.CloseSession(); },
     [](const Outputs&) -> Arguments { return {}; }},
    {F::FindBridgesByPciIds, 129,
     [](cPciBrdWrapper_ex& wrapper, Outputs& o) {
         return wrapper.FindBridgesByPciIds({kVendor, kDevice, kSubsystemVendor, kSubsystem},
                                            o.bridges);
     },
     [](const Outputs&) -> Arguments {
         return {kVendor, kDevice, kSubsystemVendor, kSubsystem, 0};
     }},
    {F::FindBridgeByAddress, 151,
     [](cPciBrdWrapper_ex& wrapper, Outputs& o) {
         return wrapper.FindBridgeByAddress(0xFE, 0xFD, 0xFC, o.handle);
     },
     [](const Outputs& o) -> Arguments {
         return {0xFE, 0xFD, 0xFC, at(&o.handle)};
     }},
    {F::FindBridgeBySlotPath, 173,
     [](cPciBrdWrapper_ex& wrapper, Outputs& o) {
         return wrapper.FindBridgeBySlotPath(o.path, o.handle);
     },
     [](const Outputs& o) -> Arguments { return {at(&o.handle)}; }},
    {F::FindParentBridgeForBus, 195,
     [](cPciBrdWrapper_ex& wrapper, Outputs& o) {
         return wrapper.FindParentBridgeForBus(0xFE, o.handle);
     },
     [](const Outputs& o) -> Arguments {
         return {0xFE, at(&o.handle)};
     }},
    {F::GetBridgeParent, 217,
     [](cPciBrdWrapper_ex& wrapper, Outputs& o) {
         return wrapper.GetBridgeParent(kBridge, o.handle);
     },
     [](const Outputs& o) -> Arguments {
         return {kBridge, at(&o.handle)};
     }},
    {F::GetBridgeChildren, 259,
     [](cPciBrdWrapper_ex& wrapper, Outputs& o) {
         return wrapper.GetBridgeChildren(kBridge, o.bridges);
     },
     [](const Outputs&) -> Arguments {
         return {kBridge, 0};
     }},
    {F::GetBusChildren, 297,
     [](cPciBrdWrapper_ex& wrapper, Outputs& o) { return wrapper.GetBusChildren(0xFE, o.bridges); },
     [](const Outputs&) -> Arguments {
         return {0xFE, 0};
     }},
    {F::GetRootBuses, 332,
     [](cPciBrdWrapper_ex& wrapper, Outputs& o) { return wrapper.GetRootBuses(o.buses); },
     [](const Outputs&) -> Arguments { return {0}; }},
    {F::GetBridgeAddress, 351,
     [](cPciBrdWrapper_ex& wrapper, Outputs& o) {
         return wrapper.GetBridgeAddress(kBridge, &o.bytes[0], &o.bytes[1], &o.bytes[2]);
     },
     [](const Outputs& o) -> Arguments {
         return {kBridge, at(&o.bytes[0]), at(&o.bytes[1]), at(&o.bytes[2])};
     }},
    {F::GetBridgeSlotPath, 365,
     [](cPciBrdWrapper_ex& wrapper, Outputs& o) {
         return wrapper.GetBridgeSlotPath(kBridge, o.path);
     },
     [](const Outputs&) -> Arguments {
         return {kBridge, 0};
     }},
    {F::GetBridgeIds, 385,
     [](cPciBrdWrapper_ex& wrapper, Outputs& o) {
         return wrapper.GetBridgeIds(kBridge, &o.words[0], &o.words[1], &o.words[2], &o.words[3]);
     },
     [](const Outputs& o) -> Arguments {
         return {kBridge, at(&o.words[0]), at(&o.words[1]), at(&o.words[2]), at(&o.words[3])};
     }},
    {F::SetAttributeU32, 401,
     [](cPciBrdWrapper_ex& wrapper, Outputs&) {
         return wrapper.SetAttributeU32(kBridge, kAttributeLinkWidth, 0xFEDCBA98);
     },
     [](const Outputs&) -> Arguments {
         return {kBridge, kAttributeLinkWidth, 0xFEDCBA98};
     }},
    {F::GetAttributeU32, 417,
     [](cPciBrdWrapper_ex& wrapper, Outputs& o) {
         return wrapper.GetAttributeU32(kBridge, kAttributeSecondaryBus, o.value);
     },
     [](const Outputs& o) -> Arguments {
         return {kBridge, kAttributeSecondaryBus, at(&o.value)};
     }},
    {F::OpenBridge, 429,
     [](cPciBrdWrapper_ex& wrapper, Outputs&) { return wrapper.OpenBridge(kBridge); },
     [](const Outputs&) -> Arguments { return {kBridge}; }},
    {F::CloseBridge, 0,
     [](cPciBrdWrapper_ex& wrapper, Outputs&) { return wrapper.CloseBridge(kBridge); },
     [](const Outputs&) -> Arguments { return {kBridge}; }},
    {F::EepromUpdate, 463,
     [](cPciBrdWrapper_ex& wrapper, Outputs& o) {
         return wrapper.EepromUpdate(kBridge, 0xFFF1, 0xFFF2, 0xFFFFFFF3, 0xFFFFFFF4, 0xFFFFFFF5,
                                     &o.data);
     },
     [](const Outputs& o) -> Arguments {
         return {kBridge, 0xFFF1, 0xFFF2, 0xFFFFFFF3, 0xFFFFFFF4, 0xFFFFFFF5, at(&o.data)};
     }},
};

const std::vector<ListOperation> kLists = {
    {F::FindBridgesByPciIds, 129, 123,
     [](cPciBrdWrapper_ex& wrapper, std::vector<std::uint32_t>& contents) {
         return runOnList<tBridgeList>(contents, [&](tBridgeList& list) {
             return wrapper.FindBridgesByPciIds({kVendor, kDevice, kSubsystemVendor, kSubsystem},
                                                list);
         });
     }},
    {F::GetBridgeChildren, 259, 253,
     [](cPciBrdWrapper_ex& wrapper, std::vector<std::uint32_t>& contents) {
         return runOnList<tBridgeList>(
             contents, [&](tBridgeList& list) { return wrapper.GetBridgeChildren(kBridge, list); });
     }},
    {F::GetBusChildren, 297, 291,
     [](cPciBrdWrapper_ex& wrapper, std::vector<std::uint32_t>& contents) {
         return runOnList<tBridgeList>(
             contents, [&](tBridgeList& list) { return wrapper.GetBusChildren(0xFE, list); });
     }},
    {F::GetRootBuses, 332, 326,
     [](cPciBrdWrapper_ex& wrapper, std::vector<std::uint32_t>& contents) {
         return runOnList<tBusList>(contents,
                                    [&](tBusList& list) { return wrapper.GetRootBuses(list); });
     }},
};

const char* nameOf(BridgeFunction function) {
    return kBridgeSymbols[static_cast<std::size_t>(function)].name;
}

} // namespace operations
