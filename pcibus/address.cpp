#include "pcibus/address.h"

namespace pcibus {
namespace {

constexpr std::size_t kMinDomainDigits = 4;
constexpr std::size_t kMaxDomainDigits = 8;

// Reads "BB:DD.F" at the beginning of the text.
bool readShort(std::string_view text, Address& result) {
    if (text.size() < 7 || text[2] != ':' || text[5] != '.')
        return false;
    const int digits[] = {hexValue(text[0]), hexValue(text[1]), hexValue(text[3]),
                          hexValue(text[4]), hexValue(text[6])};
    for (const int digit : digits) {
        if (digit < 0)
            return false;
    }
    result.bus = static_cast<std::uint8_t>(digits[0] << 4 | digits[1]);
    result.device = static_cast<std::uint8_t>(digits[2] << 4 | digits[3]);
    result.function = static_cast<std::uint8_t>(digits[4]);
    return true;
}

} // namespace

std::optional<Address> readAddress(std::string_view text) {
    Address result;
    std::size_t digits = 0;
    while (digits < text.size() && digits <= kMaxDomainDigits && hexValue(text[digits]) >= 0) {
        result.domain = result.domain << 4 | static_cast<std::uint32_t>(hexValue(text[digits]));
        ++digits;
    }
    if (digits == text.size() || text[digits] != ':')
        return std::nullopt;
    const bool hasDomain = digits >= kMinDomainDigits && digits <= kMaxDomainDigits;
    if (!hasDomain)
        result.domain = 0;
    const std::size_t start = hasDomain ? digits + 1 : 0;
    if (!readShort(text.substr(start), result))
        return std::nullopt;
    result.length = start + 7;
    return result;
}

} // namespace pcibus
