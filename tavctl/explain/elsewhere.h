// Looks for anchors where the plug-in does not.
#pragma once

#include "pcibus/pciFunction.h"
#include "source/modelDescription.h"
#include "tavctl/bus/wholeBus.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tavctl::explain {

// The functions of other domains.
class Elsewhere {
public:
    // None.
    Elsewhere() = default;

    explicit Elsewhere(const WholeBus& bus);

    // The addresses of those that have an anchor's identifiers, in order.
    [[nodiscard]] std::vector<std::string>
    anchorsOf(const nZoTavManagerPciPlugin_15_0::tModelDescription& model) const;

private:
    std::vector<std::pair<std::uint32_t, pcibus::PciFunction>> functions_; // with their domains
};

} // namespace tavctl::explain
