#include "source/terminalNumbers.h"

#include "pxidrivertools/scan.h"

#include <optional>

namespace nZoTavManagerPciPlugin_15_0 {

namespace {

// The number that a stored name uses with its base, which is the name without its digits. None for
// a base that has a digit within: the name does not begin with it then.
std::optional<std::uint32_t> usedNumber(const std::string& terminalName, const std::string& base) {
    if (!terminalName.starts_with(base))
        return std::nullopt;
    std::string_view rest = std::string_view(terminalName).substr(base.size());
    const auto number = nZoPxiDriverTools_1_0::scanUnsigned(rest);
    return number == 0U ? std::nullopt : number;
}

} // namespace

std::string withoutDigits(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        if (!nZoPxiDriverTools_1_0::isDecimalDigit(c))
            result += c;
    }
    return result;
}

void TerminalNumbers::add(const std::string& terminalName) {
    const std::string base = withoutDigits(terminalName);
    if (const auto number = usedNumber(terminalName, base))
        ++byBase_[base].entries[*number];
}

void TerminalNumbers::remove(const std::string& terminalName) {
    const std::string base = withoutDigits(terminalName);
    const auto number = usedNumber(terminalName, base);
    const auto found = byBase_.find(base);
    if (!number || found == byBase_.end())
        return;
    Used& used = found->second;
    const auto entry = used.entries.find(*number);
    if (entry == used.entries.end() || --entry->second > 0)
        return;
    used.entries.erase(entry);
    if (*number < used.searchFrom)
        used.searchFrom = *number;
}

std::uint32_t TerminalNumbers::lowestFree(const std::string& base) {
    const auto found = byBase_.find(base);
    if (found == byBase_.end())
        return 1;
    Used& used = found->second;
    while (used.entries.contains(used.searchFrom))
        ++used.searchFrom;
    return used.searchFrom;
}

} // namespace nZoTavManagerPciPlugin_15_0
