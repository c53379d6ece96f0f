// The place in the bridge tree that a traversal map leads to.
#pragma once

#include "pciBrdWrapper/iPciBrdWrapper_ex.h"
#include "pxidrivertools/cSlotPath.h"

#include <cstdint>
#include <string>

namespace nZoTavManagerPciPlugin_15_0 {

// The handle of the bridge that stands where `traversalMap` leads from `anchor`; kNoHandle when
// there is none. Raises zoerr::Exception for a map that cannot be applied or a failing look-up.
std::uint32_t findDescribedBridge(const nZoPxiDriverTools_1_0::cSlotPath& anchor,
                                  const std::string& traversalMap,
                                  nZoPciBrdWrapper_15_0::iPciBrdWrapper_ex& bridgeWrapper);

} // namespace nZoTavManagerPciPlugin_15_0
