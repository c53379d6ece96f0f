#include "fuzz/busText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace fuzz {

namespace {

using pcibus::PciFunction;

// Where a bridge's capabilities stand.
constexpr std::size_t kExpress = 0x40;
constexpr std::size_t kSubsystem = 0x58;
constexpr std::size_t kHeader = 0x40;
constexpr std::size_t kBridgeSize = 0x60;
constexpr std::size_t kRow = 16;

bool readLine(const std::string& line, PciFunction& function) {
    unsigned bus = 0;
    unsigned device = 0;
    unsigned number = 0;
    int end = 0;
    if (std::sscanf(line.c_str(), "%2x:%2x.%1x%n", &bus, &device, &number, &end) != 3)
        return false;
    function.bus = static_cast<std::uint8_t>(bus);
    function.device = static_cast<std::uint8_t>(device & 31);
    function.function = static_cast<std::uint8_t>(number & 7);
    const char* at = line.c_str() + end;
    std::array<unsigned, 4> ids{};
    int idsEnd = 0;
    if (std::sscanf(at, "%4x:%4x%n", &ids[0], &ids[1], &idsEnd) == 2) {
        at += idsEnd;
        if (std::sscanf(at, "%4x:%4x%n", &ids[2], &ids[3], &idsEnd) == 2)
            at += idsEnd;
    }
    function.vendorId = static_cast<std::uint16_t>(ids[0]);
    function.deviceId = static_cast<std::uint16_t>(ids[1]);
    function.subsystemVendorId = static_cast<std::uint16_t>(ids[2]);
    function.subsystemId = static_cast<std::uint16_t>(ids[3]);
    const auto numberBehind = [at](char letter, unsigned& value) {
        const char* const found = std::strchr(at, letter);
        return found != nullptr && std::sscanf(found + 1, "%2x", &value) == 1;
    };
    unsigned value = 0;
    if (numberBehind('h', value))
        function.headerType = static_cast<std::uint8_t>(value & 0x7F);
    if (numberBehind('>', value)) {
        function.headerType = 1;
        function.secondaryBus = static_cast<std::uint8_t>(value);
    }
    if (function.isBridge() && numberBehind('x', value))
        function.linkWidth = static_cast<std::uint8_t>(value & 0x3F);
    if (function.isBridge() && numberBehind('g', value))
        function.linkSpeed = static_cast<std::uint8_t>(value & 0xF);
    if (function.headerType > 1)
        function.subsystemVendorId = function.subsystemId = 0;
    return true;
}

void put16(std::uint8_t* at, unsigned value) {
    at[0] = static_cast<std::uint8_t>(value);
    at[1] = static_cast<std::uint8_t>(value >> 8);
}

std::size_t configSpaceOf(const PciFunction& function, std::array<std::uint8_t, 256>& bytes) {
    bytes.fill(0);
    put16(&bytes[0], function.vendorId);
    put16(&bytes[2], function.deviceId);
    bytes[0x0E] = function.headerType;
    if (!function.isBridge()) {
        if (function.headerType == 0) {
            put16(&bytes[0x2C], function.subsystemVendorId);
            put16(&bytes[0x2E], function.subsystemId);
        }
        return kHeader;
    }
    bytes[0x06] = 0x10; // there are capabilities
    bytes[0x18] = function.bus;
    bytes[0x19] = function.secondaryBus;
    bytes[0x34] = kExpress;
    bytes[kExpress] = 0x10;
    bytes[kExpress + 1] = kSubsystem;
    put16(&bytes[kExpress + 0x0C], static_cast<unsigned>(function.linkSpeed) |
                                       static_cast<unsigned>(function.linkWidth) << 4);
    bytes[kSubsystem] = 0x0D;
    put16(&bytes[kSubsystem + 4], function.subsystemVendorId);
    put16(&bytes[kSubsystem + 6], function.subsystemId);
    return kBridgeSize;
}

void appendHex(std::string& text, unsigned value) {
    constexpr char kDigits[] = "0123456789abcdef";
    text += kDigits[value >> 4 & 15];
    text += kDigits[value & 15];
}

} // namespace

std::vector<PciFunction> readBusText(std::string_view text) {
    std::vector<PciFunction> functions;
    std::uint32_t dumpLine = 1;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string line(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        PciFunction function;
        if (!readLine(line, function))
            continue;
        function.line = dumpLine;
        const std::size_t rows = (function.isBridge() ? kBridgeSize : kHeader) / kRow;
        dumpLine += static_cast<std::uint32_t>(rows) + 2;
        functions.push_back(function);
    }
    return functions;
}

std::string dumpOf(const std::vector<PciFunction>& functions) {
    std::string text;
    std::array<std::uint8_t, 256> bytes{};
    for (const PciFunction& function : functions) {
        appendHex(text, function.bus);
        text += ':';
        appendHex(text, function.device);
        text += '.';
        text += static_cast<char>('0' + function.function);
        text += " Device\n";
        const std::size_t size = configSpaceOf(function, bytes);
        for (std::size_t at = 0; at < size; ++at) {
            if (at % kRow == 0) {
                appendHex(text, static_cast<unsigned>(at));
                text += ':';
            }
            text += ' ';
            appendHex(text, bytes[at]);
            if (at % kRow == kRow - 1)
                text += '\n';
        }
        text += '\n';
    }
    return text;
}

} // namespace fuzz
