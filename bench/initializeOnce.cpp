// Loads the plug-in, initialises it once, and prints how many nanoseconds that call took and how
// many devices it found. The bus and the configuration are those that the environment names.
#include "bench/plugin.h"

#include <chrono>
#include <cstdio>
#include <exception>

int main() {
    using Clock = std::chrono::steady_clock;
    try {
        const bench::Plugin plugin;
        const auto start = Clock::now();
        plugin.initializeOrThrow();
        const auto taken = std::chrono::nanoseconds(Clock::now() - start);
        std::printf("%lld %lu\n", static_cast<long long>(taken.count()),
                    static_cast<unsigned long>(plugin.deviceCount()));
        plugin.finalize();
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "tav_initialize_once: %s\n", failure.what());
        return 1;
    }
}
