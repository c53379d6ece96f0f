/* A plug-in that answers what no sample machine does, and allocates nothing.
 *
 *   device 0   300 ports; a category, speeds and numbers that are out of the ordinary; a port's
 *              label is its index as a character, its bus is its index
 *   device 1   a status of the layers below for everything
 */
#include "include/tavPlugin.h"

#include <string.h>

static const int32_t kBelow = -313007;
static int32_t hasList = 0;

int32_t TAVPLUGIN_CALL tavPlugin_initialize(void) {
    hasList = 1;
    return kTavManSuccess;
}

void TAVPLUGIN_CALL tavPlugin_finalize(void) {
    hasList = 0;
}

int32_t TAVPLUGIN_CALL tavPlugin_getDeviceCount(uint32_t* count) {
    if (!hasList)
        return kTavManErrSoftwareFault;
    *count = 2;
    return kTavManSuccess;
}

int32_t TAVPLUGIN_CALL tavPlugin_getDeviceAttributeI32(uint32_t index, uint32_t attribute,
                                                       int32_t* value) {
    const int32_t element = (int32_t)(attribute & 0xFFu);
    if (!hasList)
        return kTavManErrSoftwareFault;
    if (index != 0)
        return index == 1 ? kBelow : kTavManErrInvalidParam;
    switch (attribute & ~0xFFu) {
    case kTavAttrPortCount:
        *value = 300;
        return kTavManSuccess;
    case kTavAttrDeviceCategory:
        *value = 99;
        return kTavManSuccess;
    case kTavAttrPortLinkWidth:
        *value = -1; /* 0xFFFFFFFF lanes */
        return kTavManSuccess;
    default:
        *value = element;
        return kTavManSuccess;
    }
}

int32_t TAVPLUGIN_CALL tavPlugin_getDeviceAttributeUTF8(uint32_t index, uint32_t attribute,
                                                        char* buffer) {
    if (!hasList)
        return kTavManErrSoftwareFault;
    if (index != 0)
        return index == 1 ? kBelow : kTavManErrInvalidParam;
    if ((attribute & ~0xFFu) == kTavAttrModelName) { /* the longest */
        memset(buffer, 'm', TAVPLUGIN_TEXT_SIZE - 1);
        buffer[TAVPLUGIN_TEXT_SIZE - 1] = 0;
    } else {
        buffer[0] = (char)(attribute & 0x7Fu);
        buffer[1] = 0;
    }
    return kTavManSuccess;
}
