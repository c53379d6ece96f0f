// What list tells: the devices with the state of their links and connectors, and those that have a
// name and are not there.
#pragma once

#include "pcibus/leftOut.h"
#include "tavctl/bus/linkState.h"
#include "tavctl/bus/wholeBus.h"
#include "tavctl/host/deviceListing.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/words/screenWidth.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tavctl {

struct ListedLink {
    LinkState link;               // as it runs
    std::optional<bool> occupied; // whether something answers behind it; nothing: not known
};

struct ListingEntry {
    ListedDevice device;
    std::size_t index = 0;         // among all that the plug-in reports
    LinkState upstream;            // the link by which it hangs at the bus
    std::vector<ListedLink> ports; // of each of its ports

    [[nodiscard]] bool isDegraded() const;
    [[nodiscard]] bool hasFreePort() const;
};

struct ListingAbsence {
    AbsentDevice device;
    std::string place; // what stands nearest to where it stood: "TAV1 connector 2", "00:04.0"
};

struct Listing {
    std::vector<ListingEntry> devices;
    std::vector<ListingAbsence> absent;
    std::optional<pcibus::LeftOut> leftOut;
};

// Without a bus (null) nothing is known of links, connectors and places.
Listing makeListing(const std::vector<ListedDevice>& devices, std::vector<AbsentDevice> absent,
                    const WholeBus* bus);

// One JSON object in one line, with its line feed. Bytes that are not UTF-8 are replaced.
std::string listingAsJson(const Listing& listing);

// The members of that object but for its version: of one machine among many.
std::string listingMembers(const Listing& listing);

struct ListingForm {
    bool verbose = false;           // cut nothing, and a line for each port
    bool degradedOnly = false;      // lines only for links that run below what they can
    std::size_t width = kUnbounded; // of a line, in characters
};

// A table, terminal name first; empty without devices. Labels are never cut: of many the first
// ones stand, and how many more there are.
std::string listingAsTable(const Listing& listing, const ListingForm& form);

// The same for those that are not there.
std::string absentAsTable(const Listing& listing, const ListingForm& form);

} // namespace tavctl
