// The configuration space of a made-up function, as far as a reader of dumps looks at it.
#pragma once

#include "pcibus/link.h"
#include "tavctl/mock/machine.h"

#include <cstdint>
#include <vector>

namespace tavctl::mock {

// What a function is to the link that it says something of.
enum class LinkRole { endpoint, rootPort, upstreamPort, downstreamPort, toConventionalBus };

// All 256 bytes. Of a recorded function those that were recorded, with its bus numbers, and with
// how its link runs where `hasNewLink`.
std::vector<std::uint8_t> configBytes(const Function& function, LinkRole role, bool isMultiFunction,
                                      bool hasNewLink);

} // namespace tavctl::mock
