#include "tavctl/explain/idSlips.h"

#include "source/descriptionLoader.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <cstdint>

namespace tavctl::explain {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;

std::uint16_t bytesExchanged(std::uint16_t number) {
    return static_cast<std::uint16_t>(number << 8U | number >> 8U);
}

struct Pair {
    const char* firstKey;
    const char* secondKey;
    std::uint16_t first;
    std::uint16_t second;
};

// Nothing unless it explains all that differs in the pair.
std::vector<std::string> slipsOf(const Pair& written, std::uint16_t first, std::uint16_t second) {
    if (written.first == first && written.second == second)
        return {};
    if (written.first == second && written.second == first)
        return {fmt::format("{} and {} are exchanged", written.firstKey, written.secondKey)};
    std::vector<std::string> keys;
    if (written.first != first) {
        if (bytesExchanged(written.first) != first)
            return {};
        keys.emplace_back(written.firstKey);
    }
    if (written.second != second) {
        if (bytesExchanged(written.second) != second)
            return {};
        keys.emplace_back(written.secondKey);
    }
    return {fmt::format("the bytes of {} are exchanged", enumerated(keys))};
}

} // namespace

std::string slipText(const tPciIds& written, const tPciIds& found) {
    using namespace nDescription;
    auto slips = slipsOf({kVid, kPid, written.vendor, written.device}, found.vendor, found.device);
    const auto more = slipsOf({kSsVid, kSsPid, written.subsystemVendor, written.subsystem},
                              found.subsystemVendor, found.subsystem);
    slips.insert(slips.end(), more.begin(), more.end());
    return enumerated(slips);
}

std::vector<tPciIds> withoutSlips(const tPciIds& written) {
    const std::uint16_t vendor = bytesExchanged(written.vendor);
    const std::uint16_t device = bytesExchanged(written.device);
    std::vector<tPciIds> meant(4, written);
    meant[0].vendor = written.device;
    meant[0].device = written.vendor;
    meant[1].vendor = vendor;
    meant[2].device = device;
    meant[3].vendor = vendor;
    meant[3].device = device;
    return meant;
}

} // namespace tavctl::explain
