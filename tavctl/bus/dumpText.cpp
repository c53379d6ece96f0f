#include "tavctl/bus/dumpText.h"

#include <fmt/core.h>

#include <cstddef>
#include <iterator>

namespace tavctl {

void appendDumpFunction(std::string& text, const std::string& address,
                        const pcibus::PciFunction& function, std::span<const std::uint8_t> bytes) {
    constexpr std::size_t kRow = 16;
    const auto out = std::back_inserter(text);
    fmt::format_to(out, "{} {:02x}{:02x}: {:04x}:{:04x}", address, bytes[0x0B], bytes[0x0A],
                   function.vendorId, function.deviceId);
    if (const std::uint8_t revision = bytes[0x08]; revision != 0)
        fmt::format_to(out, " (rev {:02x})", revision);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i % kRow == 0)
            fmt::format_to(out, "\n{:02x}:", i);
        fmt::format_to(out, " {:02x}", bytes[i]);
    }
    text += "\n\n";
}

} // namespace tavctl
