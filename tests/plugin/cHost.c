/* A host written in C: loads the library by linking with it and calls its five functions. */
#include "include/tavPlugin.h"

#include <string.h>

/* What a host sees of the first device; a status when a call fails. */
int32_t listFirstDeviceInC(uint32_t* count, int32_t* category, char* name) {
    char buffer[TAVPLUGIN_TEXT_SIZE];
    int32_t status = tavPlugin_initialize();
    if (status == kTavManSuccess)
        status = tavPlugin_getDeviceCount(count);
    if (status == kTavManSuccess)
        status = tavPlugin_getDeviceAttributeI32(0, kTavAttrDeviceCategory, category);
    if (status == kTavManSuccess)
        status = tavPlugin_getDeviceAttributeUTF8(0, kTavAttrTerminalName, buffer);
    if (status == kTavManSuccess)
        strcpy(name, buffer);
    tavPlugin_finalize();
    return status;
}
