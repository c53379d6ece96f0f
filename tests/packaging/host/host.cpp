// A host in C++: loads the plug-in from PLUGIN and prints the model of each device.
#include <dlfcn.h>
#include <tavPlugin.h>
#include <zopcibrd.h>

#include <cstdint>
#include <iostream>

namespace {

// The header's declaration is the type of what the library exports.
template <typename Function>
Function* find(void* library, const char* name) {
    return reinterpret_cast<Function*>(dlsym(library, name));
}

} // namespace

int main() {
    void* const library = dlopen(PLUGIN, RTLD_NOW);
    if (library == nullptr) {
        std::cerr << dlerror() << '\n';
        return 1;
    }
    const auto initialize = find<decltype(tavPlugin_initialize)>(library, "tavPlugin_initialize");
    const auto count =
        find<decltype(tavPlugin_getDeviceCount)>(library, "tavPlugin_getDeviceCount");
    const auto text = find<decltype(tavPlugin_getDeviceAttributeUTF8)>(
        library, "tavPlugin_getDeviceAttributeUTF8");
    std::uint32_t devices = 0;
    const std::int32_t status = initialize();
    if (status != kTavManSuccess || count(&devices) != kTavManSuccess) {
        std::cerr << "status " << status << '\n';
        return 1;
    }
    for (std::uint32_t i = 0; i < devices; ++i) {
        char model[TAVPLUGIN_TEXT_SIZE];
        if (text(i, kTavAttrModelName, model) == kTavManSuccess)
            std::cout << model << '\n';
    }
    return dlclose(library);
}
