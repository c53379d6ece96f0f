// The run-time binding to the PCI bridge library: loads it, binds its functions by name and
// forwards to them. Only cPciBrdWrapper_ex uses it, from the one thread that runs
// tavPlugin_initialize.
#pragma once

#include "pciBrdWrapper/bridgeLibrary.h"
#include "platform/dynamicLibrary.h"
#include "pxidrivertools/cSlotPath.h"
#include "quil/tErrorStatus.h"

#include <array>
#include <cstdint>

namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0 {

// The library could not be loaded or lacks a symbol.
inline constexpr std::int32_t kDynLibErrLoadFailed = nZOQUIL000::zoquilerr_invalidParameter;
inline constexpr std::int32_t kDynLibErrOutOfMemory = nZOQUIL000::zoquilerr_memoryFull;

// Every operation forwards its arguments unchanged and returns the library's status; while its
// function is not bound it answers what kBridgeSymbols says. Output pointers may be null where the
// library accepts that.
class cPciBrdDynLib {
public:
    using cSlotPath = nZoPxiDriverTools_1_0::cSlotPath;
    using tErrorStatus = nZOQUIL000::tErrorStatus;

    // Loads the library and binds the functions, unless the status is negative already. A missing
    // library or symbol is reported in the status, with the system's code and text; it is not
    // raised. The first missing symbol is named, and later ones are not looked up.
    explicit cPciBrdDynLib(tErrorStatus& status);

    // Unloads the library.
    virtual ~cPciBrdDynLib() = default;
    cPciBrdDynLib(const cPciBrdDynLib&) = delete;
    cPciBrdDynLib& operator=(const cPciBrdDynLib&) = delete;

    virtual std::int32_t OpenSession(std::uint32_t openOption, std::uint32_t* session);
    virtual std::int32_t CloseSession(std::uint32_t session);
    virtual std::int32_t FindBridgesByPciIds(std::uint32_t session, std::uint16_t vendor,
                                             std::uint16_t device, std::uint16_t subsystemVendor,
                                             std::uint16_t subsystem, std::uint32_t* bridges,
                                             std::uint32_t* count);
    virtual std::int32_t FindBridgeByAddress(std::uint32_t session, std::uint8_t bus,
                                             std::uint8_t device, std::uint8_t function,
                                             std::uint32_t* bridge);
    // Hands the library the machine text of the path; a path that cannot be printed gives the
    // printer's status, and the library is not called.
    virtual std::int32_t FindBridgeBySlotPath(std::uint32_t session, const cSlotPath& path,
                                              std::uint32_t* bridge);
    virtual std::int32_t FindParentBridgeForBus(std::uint32_t session, std::uint8_t bus,
                                                std::uint32_t* bridge);
    virtual std::int32_t GetBridgeParent(std::uint32_t session, std::uint32_t bridge,
                                         std::uint32_t* parent);
    virtual std::int32_t GetBridgeChildren(std::uint32_t session, std::uint32_t bridge,
                                           std::uint32_t* bridges, std::uint32_t* count);
    virtual std::int32_t GetBusChildren(std::uint32_t session, std::uint8_t bus,
                                        std::uint32_t* bridges, std::uint32_t* count);
    virtual std::int32_t GetRootBuses(std::uint32_t session, std::uint8_t* buses,
                                      std::uint32_t* count);
    virtual std::int32_t GetBridgeAddress(std::uint32_t session, std::uint32_t bridge,
                                          std::uint8_t* bus, std::uint8_t* device,
                                          std::uint8_t* function);
    // Asks for the size of the text, then for the text, and parses it into `path`. An answer to the
    // first question other than kPciBrdErrBufferTooSmall, success included, is returned as it is
    // and leaves `path` alone. Raises std::bad_alloc when the text that the library announces does
    // not fit into memory.
    virtual std::int32_t GetBridgeSlotPath(std::uint32_t session, std::uint32_t bridge,
                                           cSlotPath& path);
    virtual std::int32_t GetBridgeIds(std::uint32_t session, std::uint32_t bridge,
                                      std::uint16_t* vendor, std::uint16_t* device,
                                      std::uint16_t* subsystemVendor, std::uint16_t* subsystem);
    virtual std::int32_t SetAttributeU32(std::uint32_t session, std::uint32_t bridge,
                                         std::uint32_t attribute, std::uint32_t value);
    virtual std::int32_t GetAttributeU32(std::uint32_t session, std::uint32_t bridge,
                                         std::uint32_t attribute, std::uint32_t* value);
    virtual std::int32_t OpenBridge(std::uint32_t session, std::uint32_t bridge);
    virtual std::int32_t CloseBridge(std::uint32_t session, std::uint32_t bridge);
    virtual std::int32_t EepromUpdate(std::uint32_t session, std::uint32_t bridge,
                                      std::uint16_t first, std::uint16_t second,
                                      std::uint32_t third, std::uint32_t fourth,
                                      std::uint32_t fifth, void* data);

    // Looked for when it is called. kPciBrdErrUnavailable of a library that does not list
    // functions, which is no failure.
    std::int32_t GetFunctions(std::uint32_t session, tZoPciBrdFunction* functions,
                              std::uint32_t* count);

private:
    void bindAll(tErrorStatus& status);
    template <typename... Arguments>
    std::int32_t call(BridgeFunction function, Arguments... arguments) const;

    platform::DynamicLibrary module;
    std::array<void*, kBridgeFunctionCount> functions_{};
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0
