// Turns one found anchor into a device record: which address is reported, which connector labels
// the present ports take, and under which terminal name.
#pragma once

#include "pciBrdWrapper/iPciBrdWrapper_ex.h"
#include "pxidrivertools/cSlotPath.h"
#include "quil/tBusAddress.h"
#include "source/cTerminalNameDb.h"
#include "source/deviceRecord.h"
#include "source/iPciModelInfoDb.h"
#include "source/matchObserver.h"

namespace nZoTavManagerPciPlugin_15_0 {

// Raises zoerr::Exception when a bridge cannot be read, or when labels and ports do not come out
// even: kTavManErrSoftwareFault with one of the two messages below. Nothing is stored then.
tDeviceRecord walkTopology(const tBusAddress& address,
                           const nZoPxiDriverTools_1_0::cSlotPath& anchor,
                           cTerminalNameDb& terminalNames,
                           nZoPciBrdWrapper_15_0::iPciBrdWrapper_ex& bridgeWrapper,
                           const iPciModelInfoDb& models, std::uint32_t modelIndex,
                           MatchObserver& observer = noObserver());

inline constexpr const char* kMessageLabelsRanOut = "Iterator advanced to End.";
inline constexpr const char* kMessageLabelsRemain =
    "The number of labels is more than the number of ports.";

} // namespace nZoTavManagerPciPlugin_15_0
