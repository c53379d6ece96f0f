// A 32-bit host in whose process there is libgcc_s_dw2-1.dll, the unwinder that programs of the
// same compiler share; the plug-in has its own.
//
//   before FOLDER      loads the unwinder, then the plug-in of the folder, three times
//   after FOLDER       the same, but the unwinder when the plug-in is there for the first time
//   imported FOLDER    finds the unwinder loaded: raises through it itself
//
// Each time the plug-in and the bridge library raise something, and are unloaded, and the host goes
// on raising. Ends with 0, or with 1 where an answer is wrong; what the attack did was to end it.
#include "include/tavPlugin.h"

#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace {

constexpr const char* kUnwinder = "libgcc_s_dw2-1.dll";
constexpr std::int32_t kNoConfiguration = -52003;
constexpr std::int32_t kBusUnreadable = -313004;

bool isRight = true;

void expect(bool condition, const char* what) {
    std::printf("%s: %s\n", what, condition ? "yes" : "NO");
    std::fflush(stdout);
    isRight = isRight && condition;
}

[[gnu::noinline]] void throwFrom(int depth) {
    if (depth == 0)
        throw std::runtime_error("the host's own");
    throwFrom(depth - 1);
}

void raiseInHost() {
    bool isCaught = false;
    try {
        throwFrom(3);
    } catch (const std::runtime_error&) {
        isCaught = true;
    }
    expect(isCaught, "the host raises");
}

void loadUnwinder() {
    expect(LoadLibraryA(kUnwinder) != nullptr, "the unwinder is loaded");
}

template <typename Function>
Function function(HMODULE module, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

class Library {
public:
    explicit Library(const char* name) : name_(name), module_(LoadLibraryA(name)) {
        expect(module_ != nullptr, name);
    }
    ~Library() {
        FreeLibrary(module_);
        expect(GetModuleHandleA(name_) == nullptr, "it is unloaded");
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    [[nodiscard]] HMODULE get() const { return module_; }

private:
    const char* name_;
    HMODULE module_;
};

void useBoth(bool isUnwinderLoadedMeanwhile) {
    const Library plugin("zotavpci.dll");
    const Library bridges("zopcibrd.dll");
    if (isUnwinderLoadedMeanwhile)
        loadUnwinder();
    for (int i = 0; i < 2; ++i) {
        std::uint32_t count = 0;
        expect(function<decltype(&tavPlugin_getDeviceCount)>(
                   plugin.get(), "tavPlugin_getDeviceCount")(&count) == kTavManErrSoftwareFault,
               "there is no list");
        expect(function<decltype(&tavPlugin_initialize)>(plugin.get(), "tavPlugin_initialize")() ==
                   kNoConfiguration,
               "there is no configuration");
        std::uint32_t session = 0;
        expect(function<std::int32_t (*)(std::uint32_t, std::uint32_t*)>(
                   bridges.get(), "ZoPciBrd_OpenSession")(0, &session) == kBusUnreadable,
               "the bus cannot be read");
        raiseInHost();
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    const bool isAfter = std::strcmp(argv[1], "after") == 0;
    SetEnvironmentVariableA("TAV_PCI_DUMP", "Z:\\nonexistent");
    if (std::strcmp(argv[1], "before") == 0)
        loadUnwinder();
    expect((GetModuleHandleA(kUnwinder) == nullptr) == isAfter, "the unwinder is there at first");
    SetDllDirectoryA(argv[2]);
    raiseInHost();
    for (int round = 0; round < 3; ++round) {
        useBoth(isAfter && round == 0);
        raiseInHost();
    }
    return isRight ? 0 : 1;
}
