#include "tests/pciBrdWrapper/libraries/script.h"

#include <charconv>
#include <stdexcept>

namespace scripted {

namespace {

constexpr std::string_view kPrefix = "ZoPciBrd_";

[[noreturn]] void refuse(std::string_view what) {
    throw std::invalid_argument("not a fault: \"" + std::string(what) + "\"");
}

template <typename Number>
Number readNumber(std::string_view text) {
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end)
        refuse(text);
    return number;
}

std::optional<BridgeFunction> readFunction(std::string_view name) {
    using nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0::kBridgeSymbols;
    if (name == "*")
        return std::nullopt;
    for (std::size_t i = 0; i < kBridgeFunctionCount; ++i)
        if (std::string_view(kBridgeSymbols[i].name).substr(kPrefix.size()) == name)
            return static_cast<BridgeFunction>(i);
    refuse(name);
}

Fault readFault(std::string_view text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos)
        refuse(text);
    const std::string_view calls = text.substr(0, equals);
    const std::string_view what = text.substr(equals + 1);
    const std::size_t hash = calls.find('#');

    Fault fault;
    fault.function = readFunction(calls.substr(0, hash));
    if (hash != std::string_view::npos)
        fault.nth = readNumber<std::uint32_t>(calls.substr(hash + 1));
    if (what == "shrink")
        fault.kind = FaultKind::shrink;
    else if (what == "absurd")
        fault.kind = FaultKind::absurd;
    else if (what == "endless")
        fault.kind = FaultKind::endless;
    else
        fault.status = readNumber<std::int32_t>(what);
    return fault;
}

} // namespace

std::vector<Fault> readFaults(std::string_view text) {
    std::vector<Fault> faults;
    while (!text.empty()) {
        const std::size_t end = text.find(';');
        faults.push_back(readFault(text.substr(0, end)));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return faults;
}

} // namespace scripted
