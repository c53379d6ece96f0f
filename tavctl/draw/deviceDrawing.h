// The devices alone, each with the way to it.
#pragma once

#include "tavctl/bus/pciNames.h"
#include "tavctl/view/busTreeView.h"

#include <string>
#include <string_view>

namespace tavctl {

std::string devicesAsDot(const BusTreeView& view, const PciNames& names, std::string_view title);

} // namespace tavctl
