// Loads the plug-in, initialises it once, and prints how many seconds that call took, how many of
// them the processor worked for it, how many devices it found, how many bytes of memory the process
// has resident then, when it had loaded the plug-in and before, and how many more of its heap are
// in use than before the call. The bus and the configuration are those that the environment names.
#include "bench/plugin.h"
#include "bench/residentMemory.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <exception>

int main() {
    using Clock = std::chrono::steady_clock;
    try {
        const double before = bench::residentBytes();
        const bench::Plugin plugin;
        const double loaded = bench::residentBytes();
        const std::size_t heapBefore = bench::heapBytesInUse();
        const auto start = Clock::now();
        const std::clock_t processorStart = std::clock();
        plugin.initializeOrThrow();
        const std::clock_t processorEnd = std::clock();
        const std::chrono::duration<double> taken = Clock::now() - start;
        const double after = bench::residentBytes();
        const std::size_t heap = bench::heapBytesInUse() - heapBefore;
        std::printf("%.9f %.9f %lu %.0f %.0f %.0f %zu\n", taken.count(),
                    static_cast<double>(processorEnd - processorStart) / CLOCKS_PER_SEC,
                    static_cast<unsigned long>(plugin.deviceCount()), after, loaded, before, heap);
        plugin.finalize();
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "tav_initialize_once: %s\n", failure.what());
        return 1;
    }
}
