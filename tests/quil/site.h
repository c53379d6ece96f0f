// A place in the source as errors are raised at.
#pragma once

#include "quil/tErrorSite.h"

inline constexpr nZOQUIL000::tErrorSite kSite{"source\\cPciTavPluginCache", 237, "zotavpci",
                                              "kTavManErrInvalidParam"};
