// The library as a program loads it, and a session on a machine of the test's own making.
#pragma once

#include "platform/dynamicLibrary.h"
#include "tests/support/busBuilder.h"
#include "tests/support/environmentValue.h"
#include "tests/support/machines.h"
#include "tests/support/temporaryFolder.h"
#include "zopcibrd/zopcibrd.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace zopcibrdtest {

// What outputs are set to before a call, to see whether it writes them.
inline constexpr std::uint32_t kUntouched = 0xA5A5A5A5;

class BridgeLibrary {
    struct Loaded : platform::DynamicLibrary {
        Loaded() {
            if (!load(ZOPCIBRD_FILE))
                throw std::runtime_error(failureText());
        }
    };
    // Before the functions: they are looked up while the object is made.
    Loaded library_;

    // An address that becomes whatever function it is stored as.
    struct Symbol {
        void* address;
        template <class Function>
        operator Function() const {
            return reinterpret_cast<Function>(address);
        }
    };

    Symbol bind(const char* name) {
        void* const address = library_.symbol(name);
        if (address == nullptr)
            throw std::runtime_error(library_.failureText());
        return {address};
    }

public:
    decltype(&ZoPciBrd_OpenSession) OpenSession = bind("ZoPciBrd_OpenSession");
    decltype(&ZoPciBrd_CloseSession) CloseSession = bind("ZoPciBrd_CloseSession");
    decltype(&ZoPciBrd_FindBridgesByPciIds) FindBridgesByPciIds =
        bind("ZoPciBrd_FindBridgesByPciIds");
    decltype(&ZoPciBrd_FindBridgeByAddress) FindBridgeByAddress =
        bind("ZoPciBrd_FindBridgeByAddress");
    decltype(&ZoPciBrd_FindBridgeBySlotPath) FindBridgeBySlotPath =
        bind("ZoPciBrd_FindBridgeBySlotPath");
    decltype(&ZoPciBrd_FindParentBridgeForBus) FindParentBridgeForBus =
        bind("ZoPciBrd_FindParentBridgeForBus");
    decltype(&ZoPciBrd_GetBridgeParent) GetBridgeParent = bind("ZoPciBrd_GetBridgeParent");
    decltype(&ZoPciBrd_GetBridgeChildren) GetBridgeChildren = bind("ZoPciBrd_GetBridgeChildren");
    decltype(&ZoPciBrd_GetBusChildren) GetBusChildren = bind("ZoPciBrd_GetBusChildren");
    decltype(&ZoPciBrd_GetRootBuses) GetRootBuses = bind("ZoPciBrd_GetRootBuses");
    decltype(&ZoPciBrd_GetBridgeAddress) GetBridgeAddress = bind("ZoPciBrd_GetBridgeAddress");
    decltype(&ZoPciBrd_GetBridgeSlotPath) GetBridgeSlotPath = bind("ZoPciBrd_GetBridgeSlotPath");
    decltype(&ZoPciBrd_GetBridgeIds) GetBridgeIds = bind("ZoPciBrd_GetBridgeIds");
    decltype(&ZoPciBrd_SetAttributeU32) SetAttributeU32 = bind("ZoPciBrd_SetAttributeU32");
    decltype(&ZoPciBrd_GetAttributeU32) GetAttributeU32 = bind("ZoPciBrd_GetAttributeU32");
    decltype(&ZoPciBrd_OpenBridge) OpenBridge = bind("ZoPciBrd_OpenBridge");
    decltype(&ZoPciBrd_CloseBridge) CloseBridge = bind("ZoPciBrd_CloseBridge");
    decltype(&ZoPciBrd_EepromUpdate) EepromUpdate = bind("ZoPciBrd_EepromUpdate");
    decltype(&ZoPciBrd_GetFunctions) GetFunctions = bind("ZoPciBrd_GetFunctions");
};

// The library, and a folder for what it reads.
class WithLibrary : public testing::Test {
protected:
    // Opens a session on a dump or a folder and answers the status.
    std::int32_t open(const std::string& location, std::uint32_t& session) const {
        const testsupport::EnvironmentValue variable("TAV_PCI_DUMP", location);
        return library.OpenSession(0, &session);
    }

    // A session on a machine; one that cannot be opened raises.
    std::uint32_t open(const testsupport::BusBuilder& machine) {
        const auto file = folder.file("bus.txt", machine.dump());
        std::uint32_t session = kUntouched;
        if (open(file.string(), session) != 0)
            throw std::runtime_error("no session on " + file.string());
        return session;
    }

    BridgeLibrary library;
    testsupport::TemporaryFolder folder;
};

// A session on the machine with the switch.
class WithSession : public WithLibrary {
protected:
    // Handles that are no bridge's: none, no function, an endpoint, out of range.
    static constexpr std::uint32_t kBadBridges[] = {0xFFFFFFFF, 0x0008, 0x0300, 0x100E0,
                                                    0x800000E0};

    std::uint32_t handle(testsupport::BusBuilder::Node node) const {
        return machine.bus.handle(node);
    }

    testsupport::machines::Switch machine;
    std::uint32_t session = open(machine.bus);
};

} // namespace zopcibrdtest
