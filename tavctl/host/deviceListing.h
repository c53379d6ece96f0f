// The devices that the plug-in reports, read attribute by attribute, and their two forms on paper.
#pragma once

#include "pcibus/leftOut.h"
#include "tavctl/host/hostPlugin.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavctl {

// Nothing stands for "attribute not supported".
struct ListedPort {
    std::string label;
    std::optional<std::int32_t> first;  // bus below the port
    std::optional<std::int32_t> second; // link width
    std::optional<std::int32_t> third;  // link speed
};

struct ListedDevice {
    std::string model;
    std::int32_t category = 0;
    std::int32_t bus = 0;
    std::int32_t device = 0;
    std::int32_t function = 0;
    std::optional<std::int32_t> walkValue; // bus of the upstream port
    std::optional<std::int32_t> linkWidthPerLabel;
    std::string terminalName;
    std::vector<ListedPort> ports;
    bool isStored = true; // the name, so that it is the device's for good
};

// Raises FailureException.
std::vector<ListedDevice> readDevices(const HostPlugin& plugin);

// One JSON object in one line, with its line feed. Bytes that are not UTF-8 are replaced.
std::string listingAsJson(const std::vector<ListedDevice>& devices,
                          const std::optional<pcibus::LeftOut>& leftOut);

// The terminal name as people see it: with "*" behind one that is not stored.
std::string markedName(const ListedDevice& device);

// Says what that means when there is one.
void explainMarks(const std::vector<ListedDevice>& devices);

// A link speed by its code in the link capabilities: 1 is "2.5 GT/s".
std::string linkSpeedName(std::int32_t code);

// A table, terminal name first, of lines of at most 80 columns. With `verbose` nothing is cut, and
// each port has a line below its device.
std::string listingAsTable(const std::vector<ListedDevice>& devices, bool verbose);

} // namespace tavctl
