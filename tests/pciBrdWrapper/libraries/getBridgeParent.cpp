// The seventh function stands alone, so that a library can be built without it.
#include "tests/pciBrdWrapper/libraries/serve.h"
#include "zopcibrd/zopcibrd.h"

std::int32_t ZoPciBrd_GetBridgeParent(std::uint32_t session, std::uint32_t bridge,
                                      std::uint32_t* parent) {
    return scripted::serve(scripted::BridgeFunction::GetBridgeParent, scripted::Values(parent),
                           session, bridge, parent);
}
