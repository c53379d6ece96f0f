// The devices as somebody sees them who stands before them.
#pragma once

#include "tavctl/bus/pciNames.h"
#include "tavctl/view/busTreeView.h"

#include <string>
#include <string_view>

namespace tavctl {

std::string frontsAsDot(const BusTreeView& view, const PciNames& names, std::string_view title);

} // namespace tavctl
