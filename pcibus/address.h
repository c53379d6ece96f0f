// Reads the address of a PCI function as dumps and sysfs write it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace pcibus {

// The value of each character as a hexadecimal digit, -1 for one that is none.
inline constexpr std::array<std::int8_t, 256> kHexValues = [] {
    std::array<std::int8_t, 256> values{};
    values.fill(-1);
    std::int8_t value = 0;
    for (const char digit :
         {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'})
        values[static_cast<unsigned char>(digit)] = value++;
    value = 10;
    for (const char digit : {'A', 'B', 'C', 'D', 'E', 'F'})
        values[static_cast<unsigned char>(digit)] = value++;
    return values;
}();

constexpr int hexValue(char digit) {
    return kHexValues[static_cast<unsigned char>(digit)];
}

struct Address {
    std::uint32_t domain = 0;
    std::uint8_t bus = 0;
    std::uint8_t device = 0; // up to 255 and 15: the reader checks shape, not range
    std::uint8_t function = 0;
    std::size_t length = 0; // characters it took
};

// The address that the text begins with: "BB:DD.F" or "DDDD:BB:DD.F" with four to eight digits of
// domain, all hexadecimal. Nothing when the text does not begin so.
std::optional<Address> readAddress(std::string_view text);

} // namespace pcibus
