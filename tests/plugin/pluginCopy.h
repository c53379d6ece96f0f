// The plug-in and the bridge library copied into a folder of their own, so that a test can take the
// bridge library away or put another in its place; and the surroundings that a host runs in.
#pragma once

#include "platform/dynamicLibrary.h"
#include "tests/support/configuredMachine.h"
#include "tests/support/pluginFunctions.h"
#include "tests/support/temporaryFolder.h"

#include <filesystem>
#include <string>

namespace testplugin {

inline const std::filesystem::path kSampleDump =
    std::filesystem::path(TAV_SOURCE_DIR) / "samples" / "switchboxes.dump";
inline const std::filesystem::path kSampleDescriptions =
    std::filesystem::path(TAV_SOURCE_DIR) / "descriptions";
inline constexpr std::uint32_t kSampleDevices = 4;

// A state folder of its own and the sample machine, for this process and what it starts.
class SampleMachine {
public:
    SampleMachine();
    [[nodiscard]] const std::filesystem::path& state() const { return folder_.path(); }
    // The name file's text; empty when there is none.
    [[nodiscard]] std::string names() const;

private:
    testsupport::TemporaryFolder folder_;
    testsupport::ConfiguredMachine machine_;
};

// Loads the copy; finalises and unloads it at the end, as a host must that wants its memory back.
class PluginCopy : public testsupport::PluginFunctions {
public:
    PluginCopy();
    ~PluginCopy() { finalize(); }
    PluginCopy(const PluginCopy&) = delete;
    PluginCopy& operator=(const PluginCopy&) = delete;
    [[nodiscard]] std::filesystem::path bridgeLibrary() const;
    [[nodiscard]] std::filesystem::path plugin() const;
    [[nodiscard]] const std::filesystem::path& folder() const { return folder_.path(); }

    // The count, or the status with which asking for it fails.
    [[nodiscard]] std::int64_t countOrStatus() const;

private:
    testsupport::TemporaryFolder folder_;
    platform::DynamicLibrary library_;
};

} // namespace testplugin
