#include "tests/support/describe.h"

#include <array>
#include <cstdio>

namespace testsupport {

std::string describe(const pcibus::PciFunction& function) {
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(),
                  "%02x:%02x.%x type %x %04x:%04x subsystem %04x:%04x secondary %02x link x%u "
                  "speed %u",
                  unsigned{function.bus}, unsigned{function.device}, unsigned{function.function},
                  unsigned{function.headerType}, unsigned{function.vendorId},
                  unsigned{function.deviceId}, unsigned{function.subsystemVendorId},
                  unsigned{function.subsystemId}, unsigned{function.secondaryBus},
                  unsigned{function.linkWidth}, unsigned{function.linkSpeed});
    return text.data();
}

std::vector<std::string> describe(std::span<const pcibus::PciFunction> functions) {
    std::vector<std::string> lines;
    lines.reserve(functions.size());
    for (const auto& function : functions)
        lines.push_back(describe(function));
    return lines;
}

std::string describe(const pcibus::LeftOut& leftOut) {
    std::string text;
    const auto add = [&text](const char* name, std::size_t count) {
        if (count != 0)
            text += (text.empty() ? "" : ", ") + std::string(name) + ' ' + std::to_string(count);
    };
    add("otherDomains", leftOut.otherDomains);
    add("dead", leftOut.dead);
    add("unreadable", leftOut.unreadable);
    add("headerOnly", leftOut.headerOnly);
    return text.empty() ? "nothing" : text;
}

} // namespace testsupport
