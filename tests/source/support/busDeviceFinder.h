// A device finder over a bus that a test builds: it knows the functions that are no bridges.
#pragma once

#include "quil/iQUILDeviceFinder.h"
#include "tests/support/busBuilder.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace testsupport {

class BusDeviceFinder : public nZoTavManagerPciPlugin_15_0::iQUILDeviceFinder {
public:
    using tPciIds = nZoTavManagerPciPlugin_15_0::tPciIds;
    using tBusAddress = nZoTavManagerPciPlugin_15_0::tBusAddress;
    using tEnumeratedDevice = nZoTavManagerPciPlugin_15_0::tEnumeratedDevice;

    explicit BusDeviceFinder(const BusBuilder& machine);

    // Called first in every search, with its number counted from 1; may raise.
    std::function<void(std::size_t)> onSearch;
    // What was asked for, in order.
    [[nodiscard]] const std::vector<tPciIds>& searches() const { return searches_; }

    // Appends in ascending order of the addresses.
    void FindByPciIds(const tPciIds& ids, std::vector<tBusAddress>& addresses) override;

    // The cache has no need of these; both fail the test.
    void ReadPciIds(tEnumeratedDevice& device, tPciIds& ids) override;
    void ReadBusAddress(tEnumeratedDevice& device, tBusAddress& address) override;

private:
    std::vector<pcibus::PciFunction> functions_;
    std::vector<tPciIds> searches_;
};

} // namespace testsupport
