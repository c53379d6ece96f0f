// One life of the plug-in as a host leads it: initialize, ask everything, finalize. What it told is
// kept without any memory of its own, so that memory may fail meanwhile.
#pragma once

#include "platform/dynamicLibrary.h"
#include "tests/support/pluginFunctions.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace testfaults {

// The status of initialize where the bridge library cannot be loaded.
inline constexpr std::int32_t kNotLoaded = -52005;

// The plug-in of the build, loaded while this exists. Raises std::runtime_error when it cannot be.
class Plugin : public testsupport::PluginFunctions {
public:
    Plugin();
    ~Plugin() { finalize(); }
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

private:
    platform::DynamicLibrary library_;
};

// A plain value.
struct CycleReport {
    std::int32_t status = 0; // of initialize
    std::uint32_t devices = 0;
    // A query that gave kTavManErrSoftwareFault, which memory that fails is told as.
    std::uint32_t faultedQueries = 0;
    // A query that gave what no query may.
    std::uint32_t wrongQueries = 0;
    std::size_t length = 0;
    std::array<char, 16384> text{}; // a line for each device: every attribute that it has

    [[nodiscard]] std::string listing() const { return {text.data(), length}; }
};

// Makes no allocation and no system call of its own.
void runCycle(const Plugin& plugin, CycleReport& report);

// A life before those that count, of a plug-in that is unloaded after it: the first time, the
// system's libraries find out and keep what they need to know.
void warmUp();

// A status that the plug-in's header names.
bool isDocumented(std::int32_t status);

// How many descriptors this process has open.
std::size_t openDescriptors();

} // namespace testfaults
