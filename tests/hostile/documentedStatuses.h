// The one list of statuses that a host may see, taken from the headers that document them.
#pragma once

#include <cstdint>
#include <string>

namespace testhostile {

// Of tavPlugin_initialize, whose bridge library answered to OpenSession with `bridgeStatus` (0 when
// it did not fail there): that status is passed on unchanged, whatever it is.
bool isDocumentedInitialize(std::int32_t status, std::int32_t bridgeStatus = 0);

// Of the two attribute functions and tavPlugin_getDeviceCount.
bool isDocumentedQuery(std::int32_t status);

} // namespace testhostile
