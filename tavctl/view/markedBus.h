// The bus with the plug-in's devices placed on it.
#pragma once

#include "tavctl/bus/wholeBus.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/options/commonOptions.h"
#include "tavctl/view/busTreeView.h"

#include <vector>

namespace tavctl {

struct MarkedBus {
    // The setup must have copied the names, and not the machine's own in force. Raises
    // FailureException.
    MarkedBus(const CommonOptions& options, const HostSetup& setup);

    // Of each domain, that of the devices first. Good as long as this is.
    [[nodiscard]] std::vector<BusTreeView> views() const;

    // As the plug-in lists them, in the same order as the placed ones.
    [[nodiscard]] std::vector<ListedDevice> listed() const;

    WholeBus whole;
    std::vector<PlacedDevice> devices;
};

} // namespace tavctl
