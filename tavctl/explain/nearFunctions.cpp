#include "tavctl/explain/nearFunctions.h"

#include "tavctl/explain/idSlips.h"

#include <algorithm>

namespace tavctl::explain {

namespace {

using nZoTavManagerPciPlugin_15_0::tPciIds;

std::uint64_t joined(std::uint16_t a, std::uint16_t b, std::uint16_t c = 0) {
    return std::uint64_t{a} << 32 | std::uint64_t{b} << 16 | c;
}

std::uint64_t vendorAndDevice(const tPciIds& ids) {
    return joined(ids.vendor, ids.device);
}

std::uint64_t allButVendor(const tPciIds& ids) {
    return joined(ids.device, ids.subsystemVendor, ids.subsystem);
}

std::uint64_t allButDevice(const tPciIds& ids) {
    return joined(ids.vendor, ids.subsystemVendor, ids.subsystem);
}

} // namespace

int sameIds(const tPciIds& a, const tPciIds& b) {
    return (a.vendor == b.vendor ? 1 : 0) + (a.device == b.device ? 1 : 0) +
           (a.subsystemVendor == b.subsystemVendor ? 1 : 0) + (a.subsystem == b.subsystem ? 1 : 0);
}

NearFunctions::NearFunctions(const pcibus::Bus& bus) {
    for (std::size_t i = 0; i < bus.functions().size(); ++i) {
        const tPciIds ids = bus.functions()[i].ids();
        sameVendorAndDevice_[vendorAndDevice(ids)].push_back(i);
        sameButVendor_[allButVendor(ids)].push_back(i);
        sameButDevice_[allButDevice(ids)].push_back(i);
    }
}

std::vector<std::size_t> NearFunctions::find(const tPciIds& ids) const {
    std::vector<std::size_t> found;
    const auto add = [&](const Index& index, std::uint64_t key) {
        if (const auto alike = index.find(key); alike != index.end())
            found.insert(found.end(), alike->second.begin(), alike->second.end());
    };
    add(sameVendorAndDevice_, vendorAndDevice(ids));
    for (const tPciIds& meant : withoutSlips(ids))
        add(sameVendorAndDevice_, vendorAndDevice(meant));
    add(sameButVendor_, allButVendor(ids));
    add(sameButDevice_, allButDevice(ids));
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

} // namespace tavctl::explain
