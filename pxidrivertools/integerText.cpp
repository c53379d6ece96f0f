#include "pxidrivertools/integerText.h"

#include "pxidrivertools/asciiText.h"

#include <limits>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

constexpr std::int64_t kLargestMagnitude = std::numeric_limits<std::uint32_t>::max();

std::optional<std::int64_t> readInteger(std::string_view text) noexcept {
    text = trim(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+'))
        text.remove_prefix(1);
    if (text.empty())
        return std::nullopt;
    std::int64_t magnitude = 0;
    for (const char c : text) {
        if (!isDecimalDigit(c))
            return std::nullopt;
        magnitude = magnitude * 10 + (c - '0');
        if (magnitude > kLargestMagnitude)
            return std::nullopt;
    }
    return negative ? -magnitude : magnitude;
}

template <typename Number>
std::optional<Number> readWithin(std::string_view text) noexcept {
    const std::optional<std::int64_t> number = readInteger(text);
    if (!number || *number < std::numeric_limits<Number>::min() ||
        *number > std::numeric_limits<Number>::max())
        return std::nullopt;
    return static_cast<Number>(*number);
}

} // namespace

std::optional<std::int32_t> readSigned(std::string_view text) noexcept {
    return readWithin<std::int32_t>(text);
}

std::optional<std::uint32_t> readUnsigned(std::string_view text) noexcept {
    return readWithin<std::uint32_t>(text);
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
