#include "pxidrivertools/scan.h"

#include <algorithm>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

constexpr unsigned kNoDigit = 16;

unsigned digitValue(char c) noexcept {
    if (isDecimalDigit(c))
        return static_cast<unsigned>(c - '0');
    if (c >= 'a' && c <= 'f')
        return static_cast<unsigned>(c - 'a') + 10;
    if (c >= 'A' && c <= 'F')
        return static_cast<unsigned>(c - 'A') + 10;
    return kNoDigit;
}

// A number as it is written: its sign apart from its magnitude, which saturates far beyond every
// type that it is to become.
struct WrittenNumber {
    bool negative = false;
    std::uint64_t magnitude = 0;
};

std::optional<WrittenNumber> scanNumber(std::string_view& cursor, unsigned base,
                                        std::size_t width) noexcept {
    std::string_view rest = cursor;
    while (!rest.empty() && isSpace(rest.front()))
        rest.remove_prefix(1);
    std::string_view field = rest.substr(0, std::min(width, rest.size()));
    const std::size_t behind = rest.size() - field.size();

    WrittenNumber number;
    if (!field.empty() && (field.front() == '-' || field.front() == '+')) {
        number.negative = field.front() == '-';
        field.remove_prefix(1);
    }
    if (base == 16 && field.size() >= 2 && field[0] == '0' && (field[1] == 'x' || field[1] == 'X'))
        field.remove_prefix(2);

    constexpr std::uint64_t kLimit = std::uint64_t{1} << 32;
    bool any = false;
    for (; !field.empty() && digitValue(field.front()) < base; field.remove_prefix(1)) {
        any = true;
        number.magnitude = std::min(number.magnitude * base + digitValue(field.front()), kLimit);
    }
    if (!any)
        return std::nullopt;
    cursor.remove_prefix(cursor.size() - behind - field.size());
    return number;
}

std::optional<std::uint32_t> asUnsigned(std::optional<WrittenNumber> number) noexcept {
    if (!number)
        return std::nullopt;
    constexpr std::uint64_t kMax = std::numeric_limits<std::uint32_t>::max();
    if (number->magnitude > kMax)
        return static_cast<std::uint32_t>(kMax);
    const auto value = static_cast<std::uint32_t>(number->magnitude);
    return number->negative ? 0U - value : value;
}

} // namespace

std::optional<std::int32_t> scanSigned(std::string_view& cursor) noexcept {
    const auto number = scanNumber(cursor, 10, kAnyWidth);
    if (!number)
        return std::nullopt;
    const auto magnitude = static_cast<std::int64_t>(number->magnitude);
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(
        number->negative ? -magnitude : magnitude, std::numeric_limits<std::int32_t>::min(),
        std::numeric_limits<std::int32_t>::max()));
}

std::optional<std::uint32_t> scanUnsigned(std::string_view& cursor) noexcept {
    return asUnsigned(scanNumber(cursor, 10, kAnyWidth));
}

std::optional<std::uint32_t> scanHexadecimal(std::string_view& cursor, std::size_t width) noexcept {
    return asUnsigned(scanNumber(cursor, 16, width));
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
