// Finds the bridges that are a model's anchor: those with the anchor's identifiers whose described
// bridges are all present at their described places below.
#pragma once

#include "pciBrdWrapper/iPciBrdWrapper_ex.h"
#include "source/foundAnchors.h"
#include "source/iPciModelInfoDb.h"

namespace nZoTavManagerPciPlugin_15_0 {

// Appends every anchor found, in ascending handle order; finding none is no error. A bridge counts
// for one anchor only. The model's described, non-optional bridges with the anchor's identifiers
// must be as many as the bridges matched, the anchor included, so one of them stands for the anchor
// itself. Raises zoerr::Exception.
void searchAnchors(const tAnchorIdentity& anchor, const iPciModelInfoDb& models,
                   std::uint32_t modelIndex,
                   nZoPciBrdWrapper_15_0::iPciBrdWrapper_ex& bridgeWrapper, FoundAnchors& found);

} // namespace nZoTavManagerPciPlugin_15_0
