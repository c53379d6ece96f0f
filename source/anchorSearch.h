// Finds the bridges that are a model's anchor: those with the anchor's identifiers whose described
// bridges are all present at their described places below.
#pragma once

#include "pciBrdWrapper/iPciBrdWrapper_ex.h"
#include "source/foundAnchors.h"
#include "source/iPciModelInfoDb.h"
#include "source/matchObserver.h"

namespace nZoTavManagerPciPlugin_15_0 {

// Appends every anchor found, in ascending handle order; finding none is no error. A bridge counts
// for one anchor only. The model's described, non-optional bridges with the anchor's identifiers
// must be as many as the bridges matched, the anchor included, so one of them stands for the anchor
// itself. Raises zoerr::Exception; kTavManErrSoftwareFault with the message below when the bridge
// library announces a list of more bridges than there can be.
void searchAnchors(const tAnchorIdentity& anchor, const iPciModelInfoDb& models,
                   std::uint32_t modelIndex,
                   nZoPciBrdWrapper_15_0::iPciBrdWrapper_ex& bridgeWrapper, FoundAnchors& found,
                   MatchObserver& observer = noObserver());

inline constexpr const char* kMessageTooManyBridges =
    "The bridge library lists more bridges than there can be.";

// The model's bridge descriptions that belong to this anchor, those with its identifiers, in the
// order in which the search takes them. With alternate anchors each anchor has its own copy of the
// descriptions, which carries its identifiers.
std::vector<tBridgeDescription> descriptionsOfAnchor(const tAnchorIdentity& anchor,
                                                     const iPciModelInfoDb& models,
                                                     std::uint32_t modelIndex);

} // namespace nZoTavManagerPciPlugin_15_0
