// Machines that tests of several rooms look at.
#pragma once

#include "tests/support/busBuilder.h"

namespace testsupport::machines {

// Two root buses, a switch, a conventional bridge without a link, and several functions of one
// device; see the comments for the bus numbers that follow.
struct Switch {
    BusBuilder bus;
    BusBuilder::Node host = bus.rootEndpoint(0, 0, 0, {0x8086, 0x29C0, 0x1AF4, 0x1100});
    BusBuilder::Node port =
        bus.rootPort(0, 0x1C, 0, {0x8086, 0xA110, 0x1043, 0x836B}, 16, 3); // to bus 1
    BusBuilder::Node up =
        bus.bridge(port, 0, 0, {0x10B5, 0x8609, 0x1234, 0x0001}, 16, 3); // to bus 2
    BusBuilder::Node downA =
        bus.bridge(up, 1, 0, {0x10B5, 0x8609, 0x1234, 0x0002}, 8, 2); // to bus 3
    BusBuilder::Node downB =
        bus.bridge(up, 2, 0, {0x10B5, 0x8609, 0x1234, 0x0002}, 4, 2); // to bus 4
    BusBuilder::Node card = bus.endpoint(downA, 0, 0, {0x1172, 0xE001, 0x1234, 0x0010});
    BusBuilder::Node second = bus.endpoint(downA, 0, 1, {0x1172, 0xE002, 0x1234, 0x0010});
    BusBuilder::Node conventional = bus.rootPort(0, 0x1E, 0, {0x8086, 0x244E}, 0); // to bus 5
    BusBuilder::Node otherPort =
        bus.rootPort(0x40, 3, 1, {0x8086, 0xA110, 0x1043, 0x836B}, 1, 1); // to bus 41
    BusBuilder::Node otherCard = bus.endpoint(otherPort, 0x1F, 7, {0x1172, 0xE003, 0x1234, 0x0011});
};

} // namespace testsupport::machines
