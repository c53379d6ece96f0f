// A host of the plug-in for tests of what loading and initialising leave behind.
//
//   initialize FOLDER CYCLES   loads the plug-in of the folder, and initialises and finalises it
//   load FOLDER CYCLES         loads the plug-in, has it raise something, and unloads it
//   live FOLDER CYCLES         loads, initialises, reads and unloads it, without finalising
//   threads FOLDER CYCLES      the same as load, with threads that call and end, call and live on,
//                              and never call
//   visitors FOLDER CYCLES     loads the plug-in, and has it called by a thread that ends
//   foreign FOLDER CYCLES      the same as load, where the compiler's shared unwinder is loaded
//
// Prints what the process has after a few cycles and at the end, a line for each:
//
//   slots 1080 1080
//
// and ends with 1 when the plug-in answers anything but what it should.
#include "include/tavPlugin.h"
#include "platform/windows/uniqueHandle.h"
#include "tests/windows/hosting/processResources.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace {

using testwindows::ProcessResources;

constexpr int kFailed = 1;
constexpr int kUsage = 2;

void expect(bool condition, const std::string& what) {
    if (!condition)
        throw std::runtime_error(what);
}

class Plugin {
public:
    Plugin() : module_(LoadLibraryA("zotavpci.dll")) {
        expect(module_ != nullptr, "the plug-in is not loaded");
        bind(initialize, "tavPlugin_initialize");
        bind(finalize, "tavPlugin_finalize");
        bind(getDeviceCount, "tavPlugin_getDeviceCount");
    }
    ~Plugin() { FreeLibrary(module_); }
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    // The plug-in raises and catches that there is no list.
    void raise() const {
        std::uint32_t count = 0;
        expect(getDeviceCount(&count) == kTavManErrSoftwareFault, "a list before initialising");
    }
    void list() const {
        std::uint32_t count = 0;
        const std::int32_t status = initialize();
        expect(status == kTavManSuccess, "not initialised: " + std::to_string(status));
        expect(getDeviceCount(&count) == kTavManSuccess && count != 0, "no device");
    }

    decltype(&tavPlugin_initialize) initialize = nullptr;
    decltype(&tavPlugin_finalize) finalize = nullptr;
    decltype(&tavPlugin_getDeviceCount) getDeviceCount = nullptr;

private:
    template <typename Function>
    void bind(Function& function, const char* name) {
        function =
            reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    }

    HMODULE module_;
};

// A thread that does what it is told, one thing after the other, until it is destroyed.
class Worker {
public:
    Worker() : thread_(CreateThread(nullptr, 0, &run, this, 0, nullptr)) {}
    ~Worker() {
        plugin_ = nullptr;
        SetEvent(go_);
        WaitForSingleObject(thread_, INFINITE);
        CloseHandle(thread_);
        CloseHandle(go_);
        CloseHandle(done_);
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void raiseIn(const Plugin& plugin) {
        plugin_ = &plugin;
        SetEvent(go_);
        WaitForSingleObject(done_, INFINITE);
        expect(raised_, "another thread was not told");
    }

private:
    static DWORD WINAPI run(void* parameter) {
        Worker& worker = *static_cast<Worker*>(parameter);
        while (WaitForSingleObject(worker.go_, INFINITE) == WAIT_OBJECT_0 && worker.plugin_) {
            std::uint32_t count = 0;
            worker.raised_ = worker.plugin_->getDeviceCount(&count) == kTavManErrSoftwareFault;
            SetEvent(worker.done_);
        }
        return 0;
    }

    HANDLE go_ = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    HANDLE done_ = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    const Plugin* plugin_ = nullptr;
    bool raised_ = false;
    HANDLE thread_;
};

// Libraries of the system that the plug-in takes along, and that most hosts have anyway. With them
// a cycle takes a fraction of the time.
class SystemLibraries {
public:
    SystemLibraries() {
        for (std::size_t i = 0; i < kNames.size(); ++i)
            modules_[i] = LoadLibraryA(kNames[i]);
    }
    ~SystemLibraries() {
        for (HMODULE module : modules_)
            FreeLibrary(module);
    }
    SystemLibraries(const SystemLibraries&) = delete;
    SystemLibraries& operator=(const SystemLibraries&) = delete;

private:
    static constexpr std::array kNames = {"bcrypt.dll", "crypt32.dll", "rpcrt4.dll", "rsaenh.dll",
                                          "setupapi.dll"};

    std::array<HMODULE, kNames.size()> modules_ = {};
};

// The first cycles fill what the system keeps for itself, such as its lists of free blocks.
constexpr int kWarmUp = 50;

template <typename Cycle>
int measure(int cycles, Cycle cycle) {
    for (int i = 0; i < kWarmUp; ++i)
        cycle();
    const ProcessResources before = testwindows::processResources();
    {
        const SystemLibraries libraries;
        for (int i = 0; i < cycles; ++i)
            cycle();
    }
    const ProcessResources after = testwindows::processResources();
    std::printf("slots %zu %zu\n", before.freeSlots, after.freeSlots);
    std::printf("handles %zu %zu\n", before.handles, after.handles);
    std::printf("modules %zu %zu\n", before.modules, after.modules);
    std::printf("heap %zu %zu\n", before.heapBytes, after.heapBytes);
    std::printf("private %zu %zu\n", before.privateBytes, after.privateBytes);
    return 0;
}

int run(const std::string& mode, int cycles) {
    if (mode == "initialize") {
        const Plugin plugin;
        return measure(cycles, [&] {
            plugin.list();
            plugin.finalize();
        });
    }
    if (mode == "load") {
        return measure(cycles, [] {
            const Plugin plugin;
            plugin.raise();
        });
    }
    if (mode == "live") {
        return measure(cycles, [] {
            const Plugin plugin;
            plugin.raise();
            plugin.list();
        });
    }
    if (mode == "threads") {
        Worker idle;  // never calls
        Worker older; // calls each time, and is there before and afterwards
        return measure(cycles, [&] {
            Worker between; // calls before the library is unloaded, ends afterwards
            const Plugin plugin;
            plugin.raise();
            older.raiseIn(plugin);
            between.raiseIn(plugin);
            Worker().raiseIn(plugin);
            plugin.raise();
        });
    }
    if (mode == "visitors") {
        const Plugin plugin;
        return measure(cycles, [&] { Worker().raiseIn(plugin); });
    }
    if (mode == "foreign") {
        // To the process's end: it keeps itself loaded.
        expect(LoadLibraryA("libgcc_s_dw2-1.dll") != nullptr, "there is no unwinder");
        return measure(cycles, [] {
            const Plugin plugin;
            plugin.raise();
        });
    }
    return kUsage;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4)
        return kUsage;
    SetDllDirectoryW(std::filesystem::path(argv[2]).c_str());
    try {
        return run(argv[1], std::atoi(argv[3]));
    } catch (const std::runtime_error& error) {
        std::printf("%s\n", error.what());
        return kFailed;
    }
}
