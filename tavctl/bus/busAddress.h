// Addresses of PCI functions as people write them.
#pragma once

#include "pcibus/bus.h"
#include "tavctl/bus/wholeBus.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavctl {

struct DomainAddress {
    std::uint32_t domain = 0;
    std::uint32_t handle = 0; // see pcibus/pciFunction.h
};

// "01:00.0", with or without a domain before it ("0000:01:00.0"), which is 0 then. Nothing for any
// other text.
std::optional<DomainAddress> readDomainAddress(std::string_view text);

// The same for domain 0 alone: the handle.
std::optional<std::uint32_t> readBusAddress(std::string_view text);

// "0000:01:00.0", for programs; people see domain 0 without its number: "01:00.0", "0001:01:00.0".
std::string fullAddress(std::uint32_t domain, const pcibus::PciFunction& function);
std::string fullAddress(const DomainAddress& address);
std::string shortAddress(std::uint32_t domain, const pcibus::PciFunction& function);

// The function that a command-line option names. Raises FailureException with
// ExitStatus::problemFound for a text that is no address, for an address of another domain, and for
// one where nothing is.
const pcibus::PciFunction& functionAtAddress(const pcibus::Bus& bus, const std::string& text);

// The same of any domain.
struct FunctionPlace {
    const DomainBus* domain;
    const pcibus::PciFunction* function;
};
FunctionPlace functionAtAddress(const WholeBus& whole, const std::string& text);

} // namespace tavctl
