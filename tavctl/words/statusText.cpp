#include "tavctl/words/statusText.h"

#include "include/tavPlugin.h"
#include "platform/systemCode.h"
#include "pxidrivertools/cSlotPath.h"
#include "pxidrivertools/configuration.h"
#include "pxidrivertools/iIniFile.h"
#include "quil/quilStatus.h"
#include "quil/tErrorStatus.h"
#include "source/cPciTavFilesystem.h"
#include "zopcibrd/zopcibrd.h"

#include <fmt/core.h>

namespace tavctl {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using namespace nZoPxiDriverTools_1_0;

struct StatusWords {
    std::int32_t status;
    const char* words;
};

// Where two layers use one code for different things, the words name both.
constexpr StatusWords kWords[] = {
    {kTavManSuccess, "success"},
    {kTavManErrSoftwareFault, "internal fault, or no list of devices"},
    {kTavManErrInvalidParam, "invalid parameter: null, unknown or out of range"},
    {kTavManErrAttributeNotSupported, "the device does not carry this attribute"},
    {nZOQUIL000::zoquilerr_memoryFull, "out of memory"},
    {kConfigurationErrNoKey, "there is no configuration"},
    {nZOQUIL000::zoquilerr_invalidParameter,
     "the bridge library could not be loaded, or lacks a function"},
    {nZOQUIL000::kQuilErrDeviceQuery, "a query of the system's devices failed"},
    {nZOQUIL000::kQuilErrBufferTooSmall, "a value of the system's devices is longer than expected"},
    {kPciBrdErrInvalidArgument, "bridge library: bad session, bridge, attribute or argument"},
    {kPciBrdErrBufferTooSmall, "bridge library: buffer too small"},
    {kPciBrdErrNotFound, "bridge library: not found"},
    {kPciBrdErrNoBus, "bridge library: the bus cannot be read"},
    {kPciBrdErrUnavailable, "bridge library: function not available"},
    {kListWarnNothingFound, "no file matches"},
    {kIniFileErrNoEngine, "INI file: no memory for it"},
    {kIniFileErrNoPath, "INI file: no path given"},
    {kIniFileErrCannotOpen, "INI file: missing, not to be opened, or not to be read"},
    {kIniFileErrNotOpen, "INI file: no such section, or no file open"},
    {kIniFileErrReadOnly, "INI file: opened for reading only"},
    {kIniFileErrNotStored, "INI file: saving or storing failed"},
    {kIniFileErrBadNumber, "INI file: not a number, or outside 32 bits"},
    {kIniFileErrNoSection, "INI file: no such section"},
    {kIniFileErrNoKey, "INI file: no such key"},
    {kIniFileErrBadForm, "INI file: the value does not have the expected form"},
    {kSlotPathErrEmptyPath, "slot path: a function step on a path without hops"},
    {kSlotPathErrBadText, "text that cannot be read: a slot path, or a name that is not UTF-8"},
    {kListErrEmptyPattern, "listing files: no pattern"},
    {kListErrFailed, "listing files failed"},
    {kListErrConversion, "listing files: a name cannot be converted"},
};

constexpr std::uint32_t kSystemErrorMask = 0xFFFF0000U;
constexpr std::uint32_t kSystemErrorBase = 0x80070000U;
constexpr std::uint32_t kInstallationErrorBase = 0x800F0000U;
constexpr std::uint32_t kInstallationCodes = 0xE0000000U;

} // namespace

std::string hexadecimalStatus(std::int32_t status) {
    return fmt::format("0x{:08X}", static_cast<std::uint32_t>(status));
}

std::string statusWords(std::int32_t status) {
    for (const StatusWords& entry : kWords) {
        if (entry.status == status)
            return entry.words;
    }
    const auto bits = static_cast<std::uint32_t>(status);
    if ((bits & kSystemErrorMask) == kSystemErrorBase)
        return "system error: " + platform::systemMessage(bits & ~kSystemErrorMask);
    if ((bits & kSystemErrorMask) == kInstallationErrorBase)
        return fmt::format("the system's device installation failed with 0x{:08X}",
                           kInstallationCodes | (bits & ~kSystemErrorMask));
    return "unknown status";
}

std::string describeStatus(std::int32_t status) {
    return fmt::format("{} ({}): {}", status, hexadecimalStatus(status), statusWords(status));
}

} // namespace tavctl
