#include "tests/source/support/busDeviceFinder.h"

#include <gtest/gtest.h>

namespace testsupport {

BusDeviceFinder::BusDeviceFinder(const BusBuilder& machine) : functions_(machine.functions()) {}

void BusDeviceFinder::FindByPciIds(const tPciIds& ids, std::vector<tBusAddress>& addresses) {
    searches_.push_back(ids);
    if (onSearch)
        onSearch(searches_.size());
    for (const pcibus::PciFunction& each : functions_) {
        const tPciIds found{each.vendorId, each.deviceId, each.subsystemVendorId, each.subsystemId};
        if (!each.isBridge() && found == ids)
            addresses.push_back({each.bus, each.device, each.function});
    }
}

void BusDeviceFinder::ReadPciIds(tEnumeratedDevice&, tPciIds&) {
    ADD_FAILURE() << "the cache has no need of ReadPciIds";
}

void BusDeviceFinder::ReadBusAddress(tEnumeratedDevice&, tBusAddress&) {
    ADD_FAILURE() << "the cache has no need of ReadBusAddress";
}

} // namespace testsupport
