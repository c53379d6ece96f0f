// Recognises identifiers that were copied down wrongly from the right ones.
#pragma once

#include "quil/tPciIds.h"

#include <string>
#include <vector>

namespace tavctl::explain {

// What makes of `written` the identifiers `found`, or a part of them: two of them exchanged, or the
// bytes of one. "Vid and Pid are exchanged"; empty when nothing of the kind does.
std::string slipText(const nZoTavManagerPciPlugin_15_0::tPciIds& written,
                     const nZoTavManagerPciPlugin_15_0::tPciIds& found);

// What was meant, if vendor and device were written with such slips: the subsystem as it is.
std::vector<nZoTavManagerPciPlugin_15_0::tPciIds>
withoutSlips(const nZoTavManagerPciPlugin_15_0::tPciIds& written);

} // namespace tavctl::explain
