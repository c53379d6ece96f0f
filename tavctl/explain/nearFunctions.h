// Finds the functions of a bus that have nearly some identifiers, without looking at all of them:
// there may be very many models to look for.
#pragma once

#include "pcibus/bus.h"
#include "quil/tPciIds.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace tavctl::explain {

// How many of the four identifiers are the same.
int sameIds(const nZoTavManagerPciPlugin_15_0::tPciIds& a,
            const nZoTavManagerPciPlugin_15_0::tPciIds& b);

class NearFunctions {
public:
    explicit NearFunctions(const pcibus::Bus& bus);

    // Those with the same vendor and device, also when these were written with a slip, or with all
    // identifiers but one the same; in the order of the bus. Their positions among its functions.
    [[nodiscard]] std::vector<std::size_t>
    find(const nZoTavManagerPciPlugin_15_0::tPciIds& ids) const;

private:
    using Index = std::unordered_map<std::uint64_t, std::vector<std::size_t>>;
    Index sameVendorAndDevice_;
    Index sameButVendor_;
    Index sameButDevice_;
};

} // namespace tavctl::explain
