// What tree and draw have in common: the bus with the devices placed on it, and the options that
// choose a part of it and how things are called.
#pragma once

#include "tavctl/host/hostSetup.h"
#include "tavctl/options/commonOptions.h"
#include "tavctl/view/busTreeView.h"

#include <optional>
#include <string>
#include <vector>

namespace tavctl {

struct PartOptions {
    std::string address; // empty: everything
    std::string model;   // empty: everything
    std::string pciIds;  // empty: where the system has it

    // Adds -s, --model and --pci-ids to a command.
    void addTo(CommandOptions command);
};

// The bus and the devices of the plug-in on it. The setup must have copied the names, and not the
// machine's own in force. Raises FailureException.
struct MarkedBus {
    MarkedBus(const CommonOptions& options, const HostSetup& setup);
    pcibus::Bus bus;
    std::optional<pcibus::LeftOut> leftOut;
    std::vector<PlacedDevice> devices;
};

// Raises FailureException with ExitStatus::problemFound for a part that is not there.
void showPart(const PartOptions& options, BusTreeView& view);

} // namespace tavctl
