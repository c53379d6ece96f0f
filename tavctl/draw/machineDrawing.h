// The whole machine: every bridge and every function of every domain, described or not.
#pragma once

#include "tavctl/bus/pciNames.h"
#include "tavctl/view/busTreeView.h"

#include <span>
#include <string>
#include <string_view>

namespace tavctl {

std::string machineAsDot(std::span<const BusTreeView> domains, const PciNames& names,
                         std::string_view title);

} // namespace tavctl
