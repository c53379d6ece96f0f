#include "tests/pciBrdWrapper/libraries/serve.h"

#include "platform/dynamicLibrary.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>

namespace scripted {

namespace {

using nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0::kBridgeSymbols;

// A script that cannot be followed must not look like a library that answers well.
[[noreturn]] void giveUp(const std::string& reason) {
    std::fprintf(stderr, "scripted bridge library: %s\n", reason.c_str());
    std::abort();
}

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

Script scriptOfEnvironment() {
    Script script;
    script.behind = environment("SCRIPTED_BRIDGE_BEHIND");
    script.callsFile = environment("SCRIPTED_BRIDGE_CALLS");
    try {
        script.faults = readFaults(environment("SCRIPTED_BRIDGE_FAULTS"));
    } catch (const std::exception& exception) {
        giveUp(exception.what());
    }
    return script;
}

void writeCalls() {
    std::ofstream file(script().callsFile, std::ios::app);
    for (const Call& call : script().calls) {
        const char* const name = kBridgeSymbols[static_cast<std::size_t>(call.function)].name;
        file << std::string_view(name).substr(sizeof "ZoPciBrd_" - 1) << ' ' << call.status << '\n';
    }
    file.close();
    if (!file)
        giveUp("cannot write " + script().callsFile);
}

// Destroyed with the library's other static objects, when it is unloaded.
struct Unloading {
    Unloading() = default;
    ~Unloading() {
        if (!script().callsFile.empty())
            writeCalls();
        if (script().unloaded)
            *script().unloaded = true;
    }
    Unloading(const Unloading&) = delete;
    Unloading& operator=(const Unloading&) = delete;
};

Script theScript = scriptOfEnvironment();
platform::DynamicLibrary theLibraryBehind;
const Unloading kUnloading;

} // namespace

Script& script() {
    return theScript;
}

void* behind(BridgeFunction function) {
    if (script().behind.empty())
        return nullptr;
    if (!theLibraryBehind.loaded() && !theLibraryBehind.load(script().behind.c_str()))
        giveUp("cannot load what is behind: " + theLibraryBehind.failureText());
    void* const address =
        theLibraryBehind.symbol(kBridgeSymbols[static_cast<std::size_t>(function)].name);
    if (!address)
        giveUp("what is behind lacks a function: " + theLibraryBehind.failureText());
    return address;
}

std::vector<Fault> faultsNow(BridgeFunction function) {
    std::vector<Fault> now;
    for (Fault& fault : script().faults) {
        if (fault.function && *fault.function != function)
            continue;
        ++fault.met;
        if (fault.nth == 0 || fault.nth == fault.met)
            now.push_back(fault);
    }
    return now;
}

} // namespace scripted

extern "C" scripted::Script* ScriptedBridge_Script();
extern "C" scripted::Script* ScriptedBridge_Script() {
    return &scripted::script();
}
