// A machine that is being made up: functions below bridges below root buses, and the bus numbers
// that follow from that.
#pragma once

#include "pcibus/link.h"
#include "quil/tPciIds.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tavctl::mock {

// Classes and subclasses of the field's.
inline constexpr std::uint16_t kHostBridgeClass = 0x0600;
inline constexpr std::uint16_t kBridgeClass = 0x0604;
inline constexpr std::uint16_t kSystemPeripheral = 0x0880; // what needs no driver

struct Function;

// By hop: device << 3 | function.
using Functions = std::map<std::uint8_t, std::unique_ptr<Function>>;

struct Function {
    nZoTavManagerPciPlugin_15_0::tPciIds ids;
    std::uint16_t deviceClass = 0;
    std::uint8_t headerType = 0;
    bool hasLink = true; // else it is a conventional one
    pcibus::Link link;
    bool isCounted = false; // whether labels are counted by its lanes
    Functions below;

    std::uint8_t wishedBus = 0; // secondary; 0: any
    std::string wishPlace;      // of that wish
    unsigned reserve = 0;       // numbers that stay free behind those in use

    // Where it stands; a bridge that is recorded has its own numbers until they are in the way.
    std::uint8_t bus = 0;
    std::uint8_t secondary = 0; // 0: not configured, with nothing below
    std::uint8_t subordinate = 0;
    bool isRecorded = false;
    std::vector<std::uint8_t> bytes; // as recorded

    [[nodiscard]] bool isBridge() const { return headerType == 1; }
    // A bridge to a CardBus does so too.
    [[nodiscard]] bool hasBusNumbers() const { return headerType == 1 || headerType == 2; }
};

struct Machine {
    std::map<std::uint8_t, Functions> roots; // by root bus
    bool isRecorded = false;
    std::vector<std::string> otherDomains; // functions as they stand in a dump

    // The function that a hop on the root bus and hops below it lead to; null when there is none.
    [[nodiscard]] Function* at(std::uint8_t root, const std::vector<std::uint8_t>& way) const;
};

// Numbers the buses: new ones with what their port keeps free where a recorded machine has enough
// of that, as when a box is plugged in while it runs, else all of them depth first, lowest device
// first, as firmware does. Raises FailureException when the numbers do not last, or when a wish
// cannot be met. Says whether recorded numbers have changed.
bool numberBuses(Machine& machine);

} // namespace tavctl::mock
