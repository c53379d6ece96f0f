// Addresses of PCI functions as people write them.
#pragma once

#include "pcibus/bus.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavctl {

// "01:00.0", with or without the domain 0 before it ("0000:01:00.0"); the handle of that address.
// Nothing for any other text.
std::optional<std::uint32_t> readBusAddress(std::string_view text);

// The function that a command-line option names. Raises FailureException with
// ExitStatus::problemFound for a text that is no address, for an address of another domain, and for
// one where nothing is.
const pcibus::PciFunction& functionAtAddress(const pcibus::Bus& bus, const std::string& text);

} // namespace tavctl
