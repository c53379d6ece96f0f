#include "tavctl/bus/busAddress.h"

#include "tavctl/words/failure.h"

#include <fmt/core.h>

namespace tavctl {

namespace {

constexpr std::uint32_t kMaxBus = 255;

// One to `most` hexadecimal digits off the front.
std::optional<std::uint32_t> takeNumber(std::string_view& text, std::size_t most) {
    std::uint32_t number = 0;
    std::size_t digits = 0;
    while (digits < most && digits < text.size()) {
        const char c = text[digits];
        std::uint32_t value = 0;
        if (c >= '0' && c <= '9')
            value = static_cast<std::uint32_t>(c - '0');
        else if ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'))
            value = static_cast<std::uint32_t>((c | 0x20) - 'a') + 10;
        else
            break;
        number = number << 4 | value;
        ++digits;
    }
    text.remove_prefix(digits);
    return digits == 0 ? std::nullopt : std::optional(number);
}

bool take(std::string_view& text, char expected) {
    if (text.empty() || text.front() != expected)
        return false;
    text.remove_prefix(1);
    return true;
}

} // namespace

std::optional<DomainAddress> readDomainAddress(std::string_view text) {
    constexpr std::size_t kDomainDigits = 8;
    DomainAddress result;
    std::string_view rest = text;
    if (const auto domain = takeNumber(rest, kDomainDigits);
        domain && take(rest, ':') && rest.find(':') != std::string_view::npos) {
        result.domain = *domain;
        text = rest;
    }
    const auto bus = takeNumber(text, 2);
    if (!bus || *bus > kMaxBus || !take(text, ':'))
        return std::nullopt;
    const auto device = takeNumber(text, 2);
    if (!device || *device > pcibus::kMaxDevice || !take(text, '.'))
        return std::nullopt;
    const auto function = takeNumber(text, 1);
    if (!function || *function > pcibus::kMaxFunction || !text.empty())
        return std::nullopt;
    result.handle = *bus << 8 | *device << 3 | *function;
    return result;
}

namespace {

constexpr const char* kNothingThere = "there is no function at this address";

[[noreturn]] void fail(const std::string& text, const std::string& reason) {
    throw FailureException({"find function", text, reason, {}, {}}, ExitStatus::problemFound);
}

DomainAddress requireAddress(const std::string& text) {
    const auto address = readDomainAddress(text);
    if (!address)
        fail(text, "expected an address such as 01:00.0");
    return *address;
}

} // namespace

std::optional<std::uint32_t> readBusAddress(std::string_view text) {
    const auto address = readDomainAddress(text);
    return address && address->domain == 0 ? std::optional(address->handle) : std::nullopt;
}

std::string fullAddress(std::uint32_t domain, const pcibus::PciFunction& function) {
    return fmt::format("{:04x}:{}", domain, pcibus::addressText(function));
}

std::string fullAddress(const DomainAddress& address) {
    return fmt::format("{:04x}:{}", address.domain,
                       pcibus::addressTextOf(address.handle >> 8, address.handle >> 3 & 0x1FU,
                                             address.handle & 0x07U));
}

std::string shortAddress(std::uint32_t domain, const pcibus::PciFunction& function) {
    return domain == 0 ? pcibus::addressText(function) : fullAddress(domain, function);
}

const pcibus::PciFunction& functionAtAddress(const pcibus::Bus& bus, const std::string& text) {
    const DomainAddress address = requireAddress(text);
    if (address.domain != 0)
        fail(text, "it is of another domain; the plug-in and its bridge library know domain 0 "
                   "alone");
    const pcibus::PciFunction* const function = bus.find(address.handle);
    if (function == nullptr)
        fail(text, kNothingThere);
    return *function;
}

FunctionPlace functionAtAddress(const WholeBus& whole, const std::string& text) {
    const DomainAddress address = requireAddress(text);
    for (const DomainBus& domain : whole.domains) {
        if (domain.number() != address.domain)
            continue;
        if (const pcibus::PciFunction* const function = domain.bus().find(address.handle))
            return {&domain, function};
    }
    fail(text, kNothingThere);
}

} // namespace tavctl
