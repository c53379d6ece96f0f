// The devices that the plug-in reports, read attribute by attribute.
#pragma once

#include "tavctl/host/hostPlugin.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavctl {

// Nothing stands for "attribute not supported".
struct ListedPort {
    std::string label;
    std::optional<std::int32_t> secondaryBus; // the bus below the port
    std::optional<std::int32_t> linkWidth;    // at most, in lanes
    std::optional<std::int32_t> linkSpeed;    // at most, by its number: 1 is 2.5 GT/s
};

struct ListedDevice {
    std::string model;
    std::int32_t category = 0;
    std::int32_t bus = 0;
    std::int32_t device = 0;
    std::int32_t function = 0;
    std::optional<std::int32_t> upstreamBus; // of the upstream port
    std::optional<std::int32_t> linkWidthPerLabel;
    std::string terminalName;
    std::vector<ListedPort> ports;
    bool isStored = true;      // the name, so that it is the device's for good
    std::string slotPath = {}; // by which the name is stored, in machine form; empty: not known
};

// Where the device is reported: "01:00.0".
std::string addressOf(const ListedDevice& device);

// Raises FailureException.
std::vector<ListedDevice> readDevices(const HostPlugin& plugin);

// "PCI", "Expresscard", "SwitchboxTav"; "category 77" for a number that has no name.
std::string categoryName(std::int32_t category);

// The terminal name as people see it: with "*" behind one that is not stored.
std::string markedName(const std::string& name, bool isStored);
std::string markedName(const ListedDevice& device);

// What people call a connector of the device of that name, or one with several labels: "TAV1
// connector 2", "TAV3 connectors B1 B2". There is at least one label.
std::string connectorName(const std::string& device, const std::vector<std::string>& labels);

// Says what that means; and the same when there is one.
void explainMark();
void explainMarks(const std::vector<ListedDevice>& devices);

} // namespace tavctl
