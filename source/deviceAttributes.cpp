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

// Hosts ask every device for everything: what one does not carry is no exception on the way there.
std::int32_t carried(bool isCarried) {
    return isCarried ? kTavManSuccess : kTavManErrAttributeNotSupported;
}

void raiseUnless(std::int32_t status, std::int32_t line = __builtin_LINE()) {
    if (status != kTavManSuccess)
        zoerr::raise(status, nZOQUIL000::siteHere(kFile, "kTavManErrAttributeNotSupported", line));
}

void refuseIndex(std::uint32_t index) {
    if (index != 0)
        raiseInvalidParam(kFile, kMessageNotIndexable);
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
    raiseUnless(FindAttributeI32(index, attribute, value));
}

void cPciTavPluginCache::GetAttributeUTF8(std::uint32_t index, std::uint32_t attribute,
                                          char* buffer) const {
    raiseUnless(FindAttributeUTF8(index, attribute, buffer));
}

std::int32_t cPciTavPluginCache::FindAttributeI32(std::uint32_t index, std::uint32_t attribute,
                                                  std::int32_t* value) const {
    if (!built)
        raiseSoftwareFault(kFile);
    if (!value)
        raiseInvalidParam(kFile);
    const std::uint32_t element = attribute & kIndexMask;
    std::uint32_t result = 0;
    bool isCarried = true;
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
        result = RecordAt(index).walkValue;
        isCarried = result != kNoWalkValue;
        break;
    case kTavAttrPortCount:
        refuseIndex(element);
        result = static_cast<std::uint32_t>(RecordAt(index).ports.size());
        break;
    case kTavAttrPortSecondaryBus:
        result = RecordAt(index).ports.at(element).first;
        break;
    case kTavAttrLinkWidthPerLabel: // whatever the element index
        result = RecordAt(index).linkWidthPerLabel;
        isCarried = result != 0;
        break;
    case kTavAttrReserved9:
    case kTavAttrReservedA: // whatever the device index
        refuseIndex(element);
        isCarried = false;
        break;
    case kTavAttrPortLinkWidth:
        result = RecordAt(index).ports.at(element).second;
        isCarried = result != 0;
        break;
    case kTavAttrPortLinkSpeed:
        result = RecordAt(index).ports.at(element).third;
        isCarried = result != 0;
        break;
    default:
        raiseInvalidParam(kFile);
    }
    if (isCarried)
        *value = static_cast<std::int32_t>(result);
    return carried(isCarried);
}

std::int32_t cPciTavPluginCache::FindAttributeUTF8(std::uint32_t index, std::uint32_t attribute,
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
        return carried(false);
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
    return kTavManSuccess;
}

} // namespace nZoTavManagerPciPlugin_15_0
