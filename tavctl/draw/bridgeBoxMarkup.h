// The boxes of a drawing of the whole machine that are no devices, as the HTML-like labels of a DOT
// file.
#pragma once

#include "tavctl/bus/pciNames.h"
#include "tavctl/draw/machineBoxes.h"

#include <string>

namespace tavctl {

// The bridge above a row for each function below it. Lines end at the cell "h", the head, and begin
// at the cell "rN" of row N.
std::string bridgeMarkup(const BusTreeView& view, const PciNames& names, const MachineBoxes& boxes,
                         std::size_t box);

// The same without such cells, in so many columns of rows.
std::string listMarkup(const BusTreeView& view, const PciNames& names, const MachineBoxes& boxes,
                       std::size_t box, std::size_t columns);

// Rows for a device's box: what stands inside it. Lines begin at their cells "rN".
std::string insideMarkup(const BusTreeView& view, const PciNames& names, const MachineBoxes& boxes,
                         std::size_t device);

} // namespace tavctl
