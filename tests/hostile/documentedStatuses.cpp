#include "tests/hostile/documentedStatuses.h"

#include "include/tavPlugin.h"
#include "pciBrdWrapper/bridgeLibrary.h"
#include "pciBrdWrapper/cPciBrdDynLib.h"
#include "pxidrivertools/cSlotPath.h"
#include "pxidrivertools/configuration.h"
#include "pxidrivertools/iIniFile.h"
#include "quil/quilStatus.h"
#include "quil/tErrorStatus.h"
#include "source/cPciTavFilesystem.h"

#include <algorithm>
#include <iterator>

namespace testhostile {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using namespace nZoPciBrdWrapper_15_0;
using namespace nZoPxiDriverTools_1_0;

constexpr std::int32_t kOfInitialize[] = {
    kTavManSuccess,
    kTavManErrSoftwareFault,
    nZOQUIL000::zoquilerr_memoryFull,
    kConfigurationErrNoKey,
    kDynLibErrLoadFailed,
    nZOQUIL000::kQuilErrDeviceQuery,
    nZOQUIL000::kQuilErrBufferTooSmall,
    kPciBrdErrUnavailable,
    kIniFileErrNoEngine,
    kIniFileErrNoPath,
    kIniFileErrCannotOpen,
    kIniFileErrNotOpen,
    kIniFileErrReadOnly,
    kIniFileErrNotStored,
    kIniFileErrBadNumber,
    kIniFileErrNoSection,
    kIniFileErrNoKey,
    kIniFileErrBadForm,
    kSlotPathErrBadText,
    kSlotPathErrEmptyPath,
    kListErrInvalidText,
    kListErrEmptyPattern,
    kListErrFailed,
    kListErrConversion,
};

// What the substitute bridge library answers when it cannot read the bus.
constexpr std::int32_t kBusUnreadable = -313004;

// An error code of the operating system, which is 16 bits wide.
bool isSystemError(std::int32_t status) {
    return (static_cast<std::uint32_t>(status) & 0xFFFF0000U) == 0x80070000U;
}

} // namespace

bool isDocumentedInitialize(std::int32_t status, std::int32_t bridgeStatus) {
    return std::find(std::begin(kOfInitialize), std::end(kOfInitialize), status) !=
               std::end(kOfInitialize) ||
           status == kBusUnreadable || isSystemError(status) ||
           (bridgeStatus < 0 && status == bridgeStatus);
}

bool isDocumentedQuery(std::int32_t status) {
    return status == kTavManSuccess || status == kTavManErrSoftwareFault ||
           status == kTavManErrInvalidParam || status == kTavManErrAttributeNotSupported;
}

} // namespace testhostile
