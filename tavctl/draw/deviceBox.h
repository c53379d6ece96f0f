// The boxes of devices, and what stands before and above them, as the HTML-like labels of a DOT
// file.
#pragma once

#include "tavctl/bus/pciNames.h"
#include "tavctl/draw/placement.h"

#include <string>
#include <string_view>

namespace tavctl {

// A device's name, address and model above a row for each connector label. Lines end at the cell
// "h", the head, and begin at the cell "pN" of the device's port N. More rows, of three cells each,
// may stand below.
std::string deviceMarkup(const BusTreeView& view, const PciNames& names, const Placement& placement,
                         std::size_t device, std::string_view more = {});

// The addresses of bridges, one under the other.
std::string wayMarkup(const pcibus::Bus& bus, const std::vector<std::uint32_t>& way);

// The title of the drawing, and how many devices it has.
std::string captionMarkup(std::string_view title, std::size_t devices);

} // namespace tavctl
