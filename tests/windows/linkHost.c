/* A host that is linked with the plug-in's import library: by Microsoft's rules without a run-time
 * library, by GNU's with its own. Ends with 42 when every function is there and answers as it
 * should on a machine with a bus and without configuration, else with the number of the first that
 * does not. */
#include "tavPlugin.h"

/* Where the functions are, so that a call through a pointer of this type has to fit as well. */
typedef int32_t(TAVPLUGIN_CALL* ReadText)(uint32_t, uint32_t, char*);

int main(void) {
    ReadText readText = tavPlugin_getDeviceAttributeUTF8;
    char text[TAVPLUGIN_TEXT_SIZE];
    uint32_t count = 7;
    int32_t value = 7;
    if (tavPlugin_getDeviceCount(0) != kTavManErrInvalidParam)
        return 1;
    if (tavPlugin_getDeviceCount(&count) != kTavManErrSoftwareFault || count != 7)
        return 2;
    if (tavPlugin_getDeviceAttributeI32(0, kTavAttrBusNumber, &value) != kTavManErrSoftwareFault ||
        value != 7)
        return 3;
    if (readText(0, kTavAttrModelName, text) != kTavManErrSoftwareFault)
        return 4;
    if (tavPlugin_initialize() != -52003)
        return 5;
    tavPlugin_finalize();
    return 42;
}
