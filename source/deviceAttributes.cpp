// The attribute queries of cPciTavPluginCache: which field of a record answers which identifier.
#include "source/cPciTavPluginCache.h"
#include "source/tavStatus.h"

#include <cstring>
#include <string>

namespace nZoTavManagerPciPlugin_15_0 {

namespace {

constexpr const char* kFile = "source\\cPciTavPluginCache";
constexpr const char* kMessageNotIndexable =
    "Tried to specify an index on a non-indexable attribute.";

constexpr std::uint32_t kIndexMask = 0xFF;

[[noreturn]] void raiseNotSupported(std::int32_t line = __builtin_LINE()) {
    zoerr::raise(kTavManErrAttributeNotSupported,
                 nZOQUIL000::siteHere(kFile, "kTavManErrAttributeNotSupported", line));
}

void refuseIndex(std::uint32_t index) {
    if (index != 0)
        raiseInvalidParam(kFile, kMessageNotIndexable);
}

// Some values say by a value of their own that the device does not carry the attribute.
std::uint32_t supported(std::uint32_t value, std::uint32_t absent) {
    if (value == absent)
        raiseNotSupported();
    return value;
}

// Copies a text with its NUL into a buffer of TAVPLUGIN_TEXT_SIZE bytes. A text that does not fit
// leaves an empty one.
bool copyBounded(const std::string& text, char* buffer) {
    const std::size_t length = std::strlen(text.c_str());
    const bool fits = length < TAVPLUGIN_TEXT_SIZE;
    std::memcpy(buffer, text.c_str(), fits ? length : 0);
    buffer[fits ? length : 0] = 0;
    return fits;
}

} // namespace

void cPciTavPluginCache::GetAttributeI32(std::uint32_t index, std::uint32_t attribute,
                                         std::int32_t* value) const {
    if (!built)
        raiseSoftwareFault(kFile);
    if (!value)
        raiseInvalidParam(kFile);
    const std::uint32_t element = attribute & kIndexMask;
    std::uint32_t result = 0;
    switch (attribute & ~kIndexMask) {
    case kTavAttrDeviceCategory:
        refuseIndex(element);
        result = RecordAt(index).deviceCategory;
        break;
    case kTavAttrBusNumber:
        refuseIndex(element);
        result = RecordAt(index).bus;
        break;
    case kTavAttrDeviceNumber:
        refuseIndex(element);
        result = RecordAt(index).device;
        break;
    case kTavAttrFunctionNumber:
        refuseIndex(element);
        result = RecordAt(index).function;
        break;
    case kTavAttrUpstreamPortBus:
        refuseIndex(element);
        result = supported(RecordAt(index).walkValue, kNoWalkValue);
        break;
    case kTavAttrPortCount:
        refuseIndex(element);
        result = static_cast<std::uint32_t>(RecordAt(index).ports.size());
        break;
    case kTavAttrPortSecondaryBus:
        result = RecordAt(index).ports.at(element).first;
        break;
    case kTavAttrLinkWidthPerLabel: // whatever the element index
        result = supported(RecordAt(index).linkWidthPerLabel, 0);
        break;
    case kTavAttrReserved9:
    case kTavAttrReservedA: // whatever the device index
        refuseIndex(element);
        raiseNotSupported();
    case kTavAttrPortLinkWidth:
        result = supported(RecordAt(index).ports.at(element).second, 0);
        break;
    case kTavAttrPortLinkSpeed:
        result = supported(RecordAt(index).ports.at(element).third, 0);
        break;
    default:
        raiseInvalidParam(kFile);
    }
    *value = static_cast<std::int32_t>(result);
}

void cPciTavPluginCache::GetAttributeUTF8(std::uint32_t index, std::uint32_t attribute,
                                          char* buffer) const {
    if (!built)
        raiseSoftwareFault(kFile);
    if (!buffer)
        raiseInvalidParam(kFile);
    const std::uint32_t element = attribute & kIndexMask;
    std::string text;
    switch (attribute & ~kIndexMask) {
    case kTavAttrModelName:
        refuseIndex(element);
        text = RecordAt(index).modelName;
        break;
    case kTavAttrReservedText2:
    case kTavAttrReservedText3: // whatever the device and the element index
        raiseNotSupported();
    case kTavAttrConnectorLabel:
        text = RecordAt(index).ports.at(element).connectorLabel;
        break;
    case kTavAttrTerminalName:
        refuseIndex(element);
        text = RecordAt(index).terminalName;
        break;
    default:
        raiseInvalidParam(kFile);
    }
    if (!copyBounded(text, buffer))
        raiseSoftwareFault(kFile);
}

} // namespace nZoTavManagerPciPlugin_15_0
