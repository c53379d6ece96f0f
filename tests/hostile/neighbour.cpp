// See neighbour.h.
#include "tests/hostile/neighbour.h"

#include "include/tavPlugin.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>

namespace {

template <typename Function>
void bind(void* library, Function*& function, const char* name) {
    function = reinterpret_cast<Function*>(dlsym(library, name));
    if (function == nullptr)
        throw std::runtime_error(name);
}

struct Plugin {
    explicit Plugin(const char* path) {
        void* const library = dlopen(path, RTLD_NOW);
        if (library == nullptr)
            throw std::runtime_error(dlerror());
        bind(library, initialize, "tavPlugin_initialize");
        bind(library, finalize, "tavPlugin_finalize");
        bind(library, count, "tavPlugin_getDeviceCount");
        bind(library, text, "tavPlugin_getDeviceAttributeUTF8");
    }

    decltype(&tavPlugin_initialize) initialize = nullptr;
    decltype(&tavPlugin_finalize) finalize = nullptr;
    decltype(&tavPlugin_getDeviceCount) count = nullptr;
    decltype(&tavPlugin_getDeviceAttributeUTF8) text = nullptr;
};

std::string names(const Plugin& plugin) {
    std::string line;
    std::uint32_t devices = 0;
    plugin.count(&devices);
    for (std::uint32_t device = 0; device < devices; ++device) {
        char name[TAVPLUGIN_TEXT_SIZE];
        if (plugin.text(device, kTavAttrTerminalName, name) == kTavManSuccess)
            line.append(" ").append(name);
    }
    return line;
}

void run(char** arguments) {
    const Plugin plugin(arguments[1]);
    const int journal = open(arguments[3], O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    const unsigned long end = std::strtoul(arguments[5], nullptr, 10);
    for (unsigned long cycle = std::strtoul(arguments[4], nullptr, 10); cycle < end; ++cycle) {
        const std::string bus = arguments[2] + std::to_string(cycle % testhostile::kBuses);
        setenv("TAV_PCI_DUMP", bus.c_str(), 1);
        std::string line = std::to_string(cycle) + " ";
        line.append(std::to_string(plugin.initialize())).append(names(plugin));
        line.push_back('\n');
        plugin.finalize();
        if (write(journal, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
            throw std::runtime_error("cannot write the journal");
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (argc != 6)
            throw std::runtime_error("wrong number of arguments");
        run(argv);
        return 0;
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "neighbour: %s\n", exception.what());
        return 1;
    }
}
