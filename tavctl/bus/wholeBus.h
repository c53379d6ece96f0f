// The machine as people see it: every domain, CardBus bridges among the bridges, and the link of
// every function. The plug-in looks at domain 0 alone and knows no CardBus bridges.
#pragma once

#include "pcibus/bus.h"
#include "pcibus/leftOut.h"
#include "pcibus/link.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavctl {

class DomainBus {
public:
    // Domain 0 without functions.
    DomainBus();

    struct Entry {
        pcibus::PciFunction function;
        std::function<pcibus::Link()> link; // asked once, when somebody wants to know
    };

    // Takes the functions in any order; of two at one address the first. Where bridges form a
    // cycle, which a bus of the plug-in's never has, no bridge counts as configured, so that every
    // function is on a root bus.
    DomainBus(std::uint32_t number, std::vector<Entry> entries);

    [[nodiscard]] std::uint32_t number() const { return number_; }
    [[nodiscard]] const pcibus::Bus& bus() const { return *bus_; }

    // Of a function of this bus, as it was when first asked for. Not for several threads at once.
    [[nodiscard]] const pcibus::Link& linkOf(const pcibus::PciFunction& function) const;

private:
    std::uint32_t number_ = 0;
    std::unique_ptr<const pcibus::Bus> bus_;
    struct LinkOfFunction {
        std::function<pcibus::Link()> ask; // empty when it was asked
        pcibus::Link link;
    };
    mutable std::vector<LinkOfFunction> links_; // in the order of the functions
};

struct WholeBus {
    std::shared_ptr<const pcibus::Bus> searched; // domain 0 as the plug-in sees it
    std::vector<DomainBus> domains;              // ascending; the first one is domain 0
    std::optional<pcibus::LeftOut> leftOut;      // of the searched one; nothing: not known

    [[nodiscard]] const DomainBus& main() const { return domains.front(); }
};

// The bus at a UTF-8 path (see pcibus/readBus.h). Raises FailureException.
WholeBus readWholeBus(const std::string& location);

// Of a bus of which nothing more is known.
WholeBus wholeBusOf(pcibus::Bus&& bus);

} // namespace tavctl
