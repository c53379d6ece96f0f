// The two forms of the bus tree on paper.
#pragma once

#include "pcibus/leftOut.h"
#include "tavctl/bus/pciNames.h"
#include "tavctl/view/busTreeView.h"
#include "tavctl/words/screenWidth.h"
#include "tavctl/words/textStyle.h"

#include <optional>
#include <span>
#include <string>

namespace tavctl {

struct TreeForm {
    bool numeric = false;           // identifiers in place of names
    std::size_t width = kUnbounded; // of a line, in characters
};

// A line for each function, drawn as lspci -t does, with the marks of devices and ports in braces
// and the link below a port as it runs:
//
//     -[0000:00]
//      +-00.0  Maker Host Bridge
//      \-04.0-[01-03]  x8 of x16 8 GT/s  Maker Root Port
//         \-00.0-[02-03]  {TAV1: Model}  Maker Upstream Port
//            \-00.0-[03]  {TAV1 port "A", empty}  Maker Downstream Port
//
// In brackets stand the buses that a bridge forwards. A line that would be longer than the width
// has its names cut: first the function's, then the model's. Nothing else is cut, so it may be
// longer all the same.
std::string treeAsText(std::span<const BusTreeView> domains, const PciNames& names,
                       const TreeForm& form, const TextStyle& style);

// One JSON object in one line, with its line feed.
std::string treeAsJson(std::span<const BusTreeView> domains, const PciNames& names,
                       const std::optional<pcibus::LeftOut>& leftOut);

} // namespace tavctl
