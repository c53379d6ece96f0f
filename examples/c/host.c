/* A host in C11: lists the devices that the plug-in finds, each with its ports.
 *
 *   host [PLUGIN]      without PLUGIN it is the one that CMake found
 */
#include <inttypes.h>
#include <stdio.h>
#include <tavLibrary.h>
#include <tavPlugin.h>

static int32_t(TAVPLUGIN_CALL* initialize)(void);
static void(TAVPLUGIN_CALL* finalize)(void);
static int32_t(TAVPLUGIN_CALL* getCount)(uint32_t*);
static int32_t(TAVPLUGIN_CALL* getInteger)(uint32_t, uint32_t, int32_t*);
static int32_t(TAVPLUGIN_CALL* getText)(uint32_t, uint32_t, char*);

static const char* words(int32_t status) {
    switch (status) {
    case kTavManErrSoftwareFault:
        return "an internal fault, or there is no list of devices";
    case kTavManErrInvalidParam:
        return "an unknown attribute, or an index out of range";
    case kTavManErrAttributeNotSupported:
        return "this device does not carry the attribute";
    case -52003:
        return "no configuration: the key with Path and ConfigPath is missing";
    case -52005:
        return "the bridge library could not be loaded, or lacks a function";
    default:
        return "tavPlugin.h lists the others";
    }
}

/* 0 for a success, else 1, after telling what failed. */
static int fails(const char* doing, int32_t status) {
    if (status >= 0)
        return 0;
    fprintf(stderr, "%s: status %" PRId32 " (%s)\n", doing, status, words(status));
    return 1;
}

static int printDevice(uint32_t device) {
    char model[TAVPLUGIN_TEXT_SIZE], name[TAVPLUGIN_TEXT_SIZE], label[TAVPLUGIN_TEXT_SIZE];
    int32_t ports = 0, bus = 0, width = 0, port;
    if (fails("reading a name", getText(device, kTavAttrTerminalName, name)) ||
        fails("reading a model", getText(device, kTavAttrModelName, model)) ||
        fails("counting ports", getInteger(device, kTavAttrPortCount, &ports)))
        return 1;
    printf("%s: %s\n", name, model);
    for (port = 0; port < ports && port < 256; ++port) {
        int32_t status = getText(device, TAVPLUGIN_INDEXED(kTavAttrConnectorLabel, port), label);
        if (fails("reading a label", status))
            return 1;
        status = getInteger(device, TAVPLUGIN_INDEXED(kTavAttrPortSecondaryBus, port), &bus);
        if (fails("reading a bus number", status))
            return 1;
        printf("  port %s: bus %02" PRIx32, label, (uint32_t)bus);
        status = getInteger(device, TAVPLUGIN_INDEXED(kTavAttrPortLinkWidth, port), &width);
        if (status == kTavManSuccess)
            printf(", x%" PRId32, width);
        printf("\n");
        /* Not every model gives a link width: that is no failure. */
        if (status != kTavManErrAttributeNotSupported && fails("reading a link width", status))
            return 1;
    }
    return 0;
}

static int printDevices(void) {
    uint32_t count = 0, device;
    if (fails("looking for devices", initialize()) || fails("counting devices", getCount(&count)))
        return 1;
    printf("%" PRIu32 " devices\n", count);
    for (device = 0; device < count; ++device) {
        if (printDevice(device))
            return 1;
    }
    return 0;
}

int main(int argc, char** argv) {
    char reason[TAVLIBRARY_REASON_SIZE];
    int result = 1;
    tavLibrary plugin = tavLibrary_open(argc > 1 ? argv[1] : PLUGIN, reason);
    if (plugin == NULL) {
        fprintf(stderr, "%s\n", reason);
        return 1;
    }
    if (tavLibrary_find(plugin, "tavPlugin_initialize", &initialize) &&
        tavLibrary_find(plugin, "tavPlugin_finalize", &finalize) &&
        tavLibrary_find(plugin, "tavPlugin_getDeviceCount", &getCount) &&
        tavLibrary_find(plugin, "tavPlugin_getDeviceAttributeI32", &getInteger) &&
        tavLibrary_find(plugin, "tavPlugin_getDeviceAttributeUTF8", &getText)) {
        result = printDevices();
        finalize();
    } else {
        fprintf(stderr, "the library lacks a function of the plug-in's\n");
    }
    tavLibrary_close(plugin);
    return result;
}
