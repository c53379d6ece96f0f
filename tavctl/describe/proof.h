// Makes sure that a draft does what it is for before anybody sees it: that the plug-in lists the
// box by it.
#pragma once

#include "pcibus/bus.h"
#include "tavctl/describe/draft.h"

#include <memory>
#include <string>
#include <vector>

namespace tavctl::describe {

struct Proof {
    bool lists = false;
    std::vector<std::string> others; // addresses of what is listed by the draft besides
    std::string obstacle;            // why it does not list the box
};

Proof prove(const Draft& draft, const std::shared_ptr<const pcibus::Bus>& bus,
            const pcibus::PciFunction& bridge);

// Changes the draft, if it must be, until the plug-in lists the box by it; what was changed stands
// in its notes. The proof of the result.
Proof makeProvable(Draft& draft, const std::shared_ptr<const pcibus::Bus>& bus,
                   const pcibus::PciFunction& bridge);

} // namespace tavctl::describe
