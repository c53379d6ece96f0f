// Which devices list tells of.
#pragma once

#include "tavctl/list/listing.h"
#include "tavctl/options/options.h"

#include <set>
#include <string>
#include <vector>

namespace tavctl {

struct ListFilter {
    std::vector<std::string> devices; // by name, address or model; none: all
    std::string category;             // empty: any
    bool all = false;                 // those that are not there, too
    bool present = false;             // none that is not there
    bool absent = false;              // only those that are not there
    bool freePort = false;            // only those with a connector that nothing is behind
    bool degraded = false;            // only those with a link that runs below what it can

    // Adds DEVICE and the options to a command.
    void addTo(CommandOptions command);

    // Whether the command line leaves anything out.
    [[nodiscard]] bool isNarrow() const;

    // Whether devices that are not there are to be told to people; programs are always told.
    [[nodiscard]] bool tellsAbsent() const { return all || absent || !devices.empty(); }

    // Leaves out of the listing of one machine what is not asked for; says what each DEVICE was
    // taken for. Raises FailureException, with ExitStatus::problemFound for a DEVICE that is
    // neither there nor known by its name, and with ExitStatus::wrongUsage for options that
    // contradict each other.
    void apply(Listing& listing) const;

    // The same for one of many machines, which need not have a DEVICE: it then has nothing that is
    // asked for. Adds to `found` those that it has. Raises the latter exception only.
    void applyToOneOfMany(Listing& listing, std::set<std::string>& found) const;

private:
    void requireNoContradiction() const;
    void applyWithoutDevices(Listing& listing) const;
};

} // namespace tavctl
