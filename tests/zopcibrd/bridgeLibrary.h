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
    platform::DynamicLibrary library_ = {};

    // Before the functions: they are looked up while the object is made.
    bool loaded_ = load();

    bool load() {
        if (!library_.load(ZOPCIBRD_FILE))
            throw std::runtime_error(library_.failureText());
        return true;
    }

    template <class Function>
    Function bind(const char* name) {
        void* const address = library_.symbol(name);
        if (address == nullptr)
            throw std::runtime_error(library_.failureText());
        return reinterpret_cast<Function>(address);
    }

public:
#define BRIDGE_FUNCTION(name)                                                                      \
    decltype(&ZoPciBrd_##name) name = bind<decltype(&ZoPciBrd_##name)>("ZoPciBrd_" #name)
    BRIDGE_FUNCTION(OpenSession);
    BRIDGE_FUNCTION(CloseSession);
    BRIDGE_FUNCTION(FindBridgesByPciIds);
    BRIDGE_FUNCTION(FindBridgeByAddress);
    BRIDGE_FUNCTION(FindBridgeBySlotPath);
    BRIDGE_FUNCTION(FindParentBridgeForBus);
    BRIDGE_FUNCTION(GetBridgeParent);
    BRIDGE_FUNCTION(GetBridgeChildren);
    BRIDGE_FUNCTION(GetBusChildren);
    BRIDGE_FUNCTION(GetRootBuses);
    BRIDGE_FUNCTION(GetBridgeAddress);
    BRIDGE_FUNCTION(GetBridgeSlotPath);
    BRIDGE_FUNCTION(GetBridgeIds);
    BRIDGE_FUNCTION(SetAttributeU32);
    BRIDGE_FUNCTION(GetAttributeU32);
    BRIDGE_FUNCTION(OpenBridge);
    BRIDGE_FUNCTION(CloseBridge);
    BRIDGE_FUNCTION(EepromUpdate);
#undef BRIDGE_FUNCTION
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
