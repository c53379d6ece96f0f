// The two forms of the bus tree on paper.
#pragma once

#include "pcibus/leftOut.h"
#include "tavctl/bus/pciNames.h"
#include "tavctl/view/busTreeView.h"
#include "tavctl/words/textStyle.h"

#include <optional>
#include <string>

namespace tavctl {

// A line for each function, drawn as lspci -t does, with the marks of devices and ports in braces:
//
//     -[0000:00]
//      +-00.0  Maker Host Bridge
//      \-04.0-[01-03]  Maker Root Port
//         \-00.0-[02-03]  {TAV1: Model}  Maker Upstream Port
//            \-00.0-[03]  {TAV1 port "A", empty}  Maker Downstream Port
//
// With `numeric` the identifiers stand in place of the names.
std::string treeAsText(const BusTreeView& view, const PciNames& names, bool numeric,
                       const TextStyle& style);

// One JSON object in one line, with its line feed.
std::string treeAsJson(const BusTreeView& view, const PciNames& names,
                       const std::optional<pcibus::LeftOut>& leftOut);

} // namespace tavctl
