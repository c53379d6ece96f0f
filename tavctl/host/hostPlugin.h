// The plug-in as a host loads it: the library and its five functions, nothing else.
#pragma once

#include "include/tavPlugin.h"
#include "platform/dynamicLibrary.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tavctl {

// Finalises and unloads the plug-in when destroyed. Every failure is a FailureException.
class HostPlugin {
public:
    // Loads `path`; without one the plug-in beside the program, else the one that the system finds.
    explicit HostPlugin(const std::string& path);
    ~HostPlugin();
    HostPlugin(const HostPlugin&) = delete;
    HostPlugin& operator=(const HostPlugin&) = delete;

    // The file name or path that was loaded.
    [[nodiscard]] const std::string& path() const noexcept { return path_; }

    // The plug-in's own status, 0 or negative.
    [[nodiscard]] std::int32_t initialize() const { return initialize_(); }

    [[nodiscard]] std::uint32_t deviceCount() const;

    // Nothing when the device does not carry the attribute.
    [[nodiscard]] std::optional<std::int32_t> integer(std::uint32_t device,
                                                      std::uint32_t attribute) const;
    [[nodiscard]] std::string text(std::uint32_t device, std::uint32_t attribute) const;

private:
    template <typename Function>
    void bind(Function*& function, const char* name);

    platform::DynamicLibrary library_;
    std::string path_;
    decltype(&tavPlugin_initialize) initialize_ = nullptr;
    decltype(&tavPlugin_finalize) finalize_ = nullptr;
    decltype(&tavPlugin_getDeviceCount) getDeviceCount_ = nullptr;
    decltype(&tavPlugin_getDeviceAttributeI32) getDeviceAttributeI32_ = nullptr;
    decltype(&tavPlugin_getDeviceAttributeUTF8) getDeviceAttributeUTF8_ = nullptr;
};

} // namespace tavctl
