/* A host in C: loads the plug-in from PLUGIN and prints the model of each device. */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>
#include <tavPlugin.h>
#include <zopcibrd.h>

/* A data pointer as one of a function, which C converts by way of its bytes alone. */
static void find(void* library, const char* name, void* function) {
    void* address = dlsym(library, name);
    memcpy(function, &address, sizeof(address));
}

int main(void) {
    void* library = dlopen(PLUGIN, RTLD_NOW);
    int32_t(TAVPLUGIN_CALL * initialize)(void);
    int32_t(TAVPLUGIN_CALL * count)(uint32_t*);
    int32_t(TAVPLUGIN_CALL * text)(uint32_t, uint32_t, char*);
    uint32_t devices = 0;
    uint32_t i;
    int32_t status;
    if (library == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    find(library, "tavPlugin_initialize", &initialize);
    find(library, "tavPlugin_getDeviceCount", &count);
    find(library, "tavPlugin_getDeviceAttributeUTF8", &text);
    status = initialize();
    if (status != kTavManSuccess || count(&devices) != kTavManSuccess) {
        fprintf(stderr, "status %d\n", (int)status);
        return 1;
    }
    for (i = 0; i < devices; ++i) {
        char model[TAVPLUGIN_TEXT_SIZE];
        if (text(i, kTavAttrModelName, model) == kTavManSuccess)
            puts(model);
    }
    return dlclose(library);
}
