// What a drawing says of the PCI Express link below a bridge.
#pragma once

#include "tavctl/view/busTreeView.h"

#include <string>

namespace tavctl {

// How the link runs, or where that is not known, as behind an empty connector, how it could.
struct LinkText {
    std::string text;       // short; empty where there is no link
    std::string whole;      // in lines, for a tooltip: with what each end can
    bool isReduced = false; // it runs below what both ends can
};

LinkText linkTextOf(const BusTreeView& view, const pcibus::PciFunction& bridge);

// In the colour that fits; a blank where there is no link.
std::string linkMarkup(const LinkText& link);

} // namespace tavctl
