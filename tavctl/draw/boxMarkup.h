// What the boxes of a drawing say, as the HTML-like labels of a DOT file.
#pragma once

#include "tavctl/bus/pciNames.h"
#include "tavctl/draw/placement.h"

#include <string>
#include <string_view>

namespace tavctl {

// Of frames, and of what joins the boxes.
inline constexpr const char* kLineColour = "#94a3b8";

// A device's name, address and model above a row for each connector label. Lines end at the cell
// "h", the head, and begin at the cell "pN" of the device's port N.
std::string deviceMarkup(const BusTreeView& view, const PciNames& names, const Placement& placement,
                         std::size_t device);

// The whole texts of which the box has room for the front.
std::string deviceTooltip(const PlacedDevice& device);

// The addresses of bridges, one under the other.
std::string wayMarkup(const pcibus::Bus& bus, const std::vector<std::uint32_t>& way);

std::string rootBusMarkup(const PciNames& names, const RootBusBox& box);

// The title of the drawing, and how many devices it has.
std::string captionMarkup(std::string_view title, std::size_t devices);

} // namespace tavctl
