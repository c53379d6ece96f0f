// What tree and draw have in common: the options that choose a part of the bus and how things are
// called.
#pragma once

#include "tavctl/options/options.h"
#include "tavctl/view/markedBus.h"

#include <string>
#include <vector>

namespace tavctl {

struct PartOptions {
    std::vector<std::string> devices; // by name, address or model; none: everything
    std::string address;              // empty: everything
    std::string model;                // empty: everything
    std::string pciIds;               // empty: where the system has it

    // Adds DEVICE, -s, --model and --pci-ids to a command.
    void addTo(CommandOptions command);
};

// Shows only the chosen part in the views, which are those of the bus. Raises FailureException with
// ExitStatus::problemFound for a part that is not there.
void showPart(const PartOptions& options, const MarkedBus& marked, std::vector<BusTreeView>& views);

} // namespace tavctl
