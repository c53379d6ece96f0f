// A host that tells what the product makes of its surroundings: a program of its own, so that a
// test can give it another user, other privileges, another folder or another environment.
//
//     privilegeHost LIBRARY...                loads each as the loader finds it
//     privilegeHost --initialize LIBRARY...   and the first one is the plug-in; the last one first
//     privilegeHost --apart ...               the same in a linker namespace of its own
//
// One fact a line: "name value".
#include "include/tavPlugin.h"
#include "platform/busLocation.h"
#include "platform/configurationValue.h"
#include "platform/hostConfiguration.h"
#include "pxidrivertools/configuration.h"

#include <dlfcn.h>
#include <sys/auxv.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::kConfigurationKey;

void tellOfEnvironment() {
    std::printf("raised %lu\n", getauxval(AT_SECURE));
    std::printf("configuration %s\n", platform::configurationOrigin(kConfigurationKey).c_str());
    std::printf("bus %s\n", platform::busLocation().value_or("none").c_str());
}

void tellOfOwnSettings() {
    const platform::HostConfiguration configuration(kConfigurationKey, {{"Path", "/nowhere/"}});
    std::printf("ownConfiguration %u\n", configuration.code());
    std::printf("ownBus %u\n", platform::useRecordedBus("/nowhere"));
}

void initialize(void* plugin) {
    const auto function = [&](const char* name) { return dlsym(plugin, name); };
    std::uint32_t count = 0;
    const auto status =
        reinterpret_cast<decltype(&tavPlugin_initialize)>(function("tavPlugin_initialize"))();
    reinterpret_cast<decltype(&tavPlugin_getDeviceCount)>(function("tavPlugin_getDeviceCount"))(
        &count);
    reinterpret_cast<decltype(&tavPlugin_finalize)>(function("tavPlugin_finalize"))();
    std::printf("initialize %d\ndevices %u\n", status, count);
}

} // namespace

int main(int argc, char** argv) {
    std::vector<std::string> words(argv + 1, argv + argc);
    const bool isApart = !words.empty() && words.front() == "--apart";
    if (isApart)
        words.erase(words.begin());
    const bool initializes = !words.empty() && words.front() == "--initialize";
    void* library = nullptr;
    for (auto word = words.rbegin(); word != words.rend() - (initializes ? 1 : 0); ++word) {
        library = isApart ? dlmopen(LM_ID_NEWLM, word->c_str(), RTLD_NOW)
                          : dlopen(word->c_str(), RTLD_NOW);
        std::printf("loaded %d\n", library != nullptr ? 1 : 0);
    }
    tellOfEnvironment();
    if (initializes && library != nullptr)
        initialize(library);
    tellOfOwnSettings();
    return 0;
}
