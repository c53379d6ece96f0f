// Reads what a function is out of the bytes of its configuration space. Dumps and sysfs share it.
#pragma once

#include "pcibus/link.h"
#include "pcibus/pciFunction.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace pcibus {

// The standard header, which every function has; ordinary users may read no more of a live bus.
inline constexpr std::size_t kHeaderSize = 64;

// What every function has, of which lspci -xxx prints all.
inline constexpr std::size_t kStandardSize = 256;

// The most that a PCI Express function has.
inline constexpr std::size_t kMaxConfigSize = 4096;

// Fills everything but the address and the line. `bytes` are the first ones of the configuration
// space, at least kHeaderSize of them; what lies beyond them counts as not there. A list of
// capabilities that comes back to itself ends there, and what came before counts.
void decodeConfigSpace(std::span<const std::uint8_t> bytes, PciFunction& result);

// The link of a function of any kind; nothing known where the bytes have no such capability.
Link decodeLink(std::span<const std::uint8_t> bytes);

// What the header says; `bytes` as above. Where no function answers, every byte reads FF.
bool isDead(std::span<const std::uint8_t> bytes);
bool saysCapabilities(std::span<const std::uint8_t> bytes);

} // namespace pcibus
