// A machine with links for tests of how they run.
#pragma once

#include "tavctl/bus/linkState.h"
#include "tavctl/bus/wholeBus.h"
#include "tests/support/busBuilder.h"

#include <string>

namespace tavctltest {

// A root port of sixteen lanes above a switch of eight; of its ports the first has a card.
struct LinkMachine {
    testsupport::BusBuilder bus;
    testsupport::BusBuilder::Node root = bus.rootPort(0, 4, 0, {0x8086, 0x3420, 0, 0}, 16, 4);
    testsupport::BusBuilder::Node up = bus.bridge(root, 0, 0, {0x10B5, 0x8609, 0, 0}, 8, 3);
    testsupport::BusBuilder::Node down = bus.bridge(up, 1, 0, {0x10B5, 0x8609, 0, 0}, 8, 3);
    testsupport::BusBuilder::Node empty = bus.bridge(up, 2, 0, {0x10B5, 0x8609, 0, 0}, 8, 3);
    testsupport::BusBuilder::Node card = bus.endpoint(down, 0, 0, {0x1172, 0xE001, 1, 2}, 4, 2);
    testsupport::BusBuilder::Node toPci = bus.bridge(empty, 0, 0, {0x104C, 0x8240, 0, 0}, 0);

    [[nodiscard]] std::string below(const tavctl::WholeBus& whole,
                                    testsupport::BusBuilder::Node node) const {
        return tavctl::linkText(
            tavctl::linkBelow(whole.main(), *whole.main().bus().find(bus.handle(node))));
    }
};

} // namespace tavctltest
