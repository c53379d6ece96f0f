#include "tavctl/host/hostPlugin.h"

#include "platform/file.h"
#include "platform/programPath.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/statusText.h"

#include <fmt/core.h>

#include <array>

namespace tavctl {

namespace {

constexpr const char* kPluginName = "zotavpci";

std::string defaultPath() {
    const std::string name = platform::libraryFileName(kPluginName);
    std::string beside = platform::programFolder() + name;
    return platform::lastWriteTime(beside.c_str()) ? beside : name;
}

[[noreturn]] void failToRead(std::uint32_t device, std::uint32_t attribute, std::int32_t status,
                             const char* hint = "") {
    throw FailureException({"read attribute",
                            fmt::format("device {}, attribute 0x{:08X}", device, attribute),
                            {},
                            status,
                            {},
                            hint});
}

} // namespace

template <typename Function>
void HostPlugin::bind(Function*& function, const char* name) {
    function = reinterpret_cast<Function*>(library_.symbol(name));
    if (!function)
        throw FailureException(
            {"load plug-in", path_, fmt::format("it does not export {}", name), {}, {}});
}

HostPlugin::HostPlugin(const std::string& path) : path_(path.empty() ? defaultPath() : path) {
    if (!library_.load(path_.c_str()))
        throw FailureException({"load plug-in", path_, library_.failureText(), {}, {}});
    bind(initialize_, "tavPlugin_initialize");
    bind(finalize_, "tavPlugin_finalize");
    bind(getDeviceCount_, "tavPlugin_getDeviceCount");
    bind(getDeviceAttributeI32_, "tavPlugin_getDeviceAttributeI32");
    bind(getDeviceAttributeUTF8_, "tavPlugin_getDeviceAttributeUTF8");
}

HostPlugin::~HostPlugin() {
    finalize_();
}

std::uint32_t HostPlugin::deviceCount() const {
    std::uint32_t count = 0;
    const std::int32_t status = getDeviceCount_(&count);
    if (status != kTavManSuccess)
        throw FailureException({"count devices", path_, {}, status, {}});
    return count;
}

std::optional<std::int32_t> HostPlugin::integer(std::uint32_t device,
                                                std::uint32_t attribute) const {
    std::int32_t value = 0;
    const std::int32_t status = getDeviceAttributeI32_(device, attribute, &value);
    if (status == kTavManErrAttributeNotSupported)
        return std::nullopt;
    if (status != kTavManSuccess)
        failToRead(device, attribute, status);
    return value;
}

std::string HostPlugin::text(std::uint32_t device, std::uint32_t attribute) const {
    std::array<char, TAVPLUGIN_TEXT_SIZE> buffer{};
    const std::int32_t status = getDeviceAttributeUTF8_(device, attribute, buffer.data());
    // Mostly a description's text that is too long for the buffer.
    if (status != kTavManSuccess)
        failToRead(device, attribute, status, "tavctl lint");
    return buffer.data();
}

} // namespace tavctl
