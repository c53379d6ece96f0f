#include "pxidrivertools/ini/iniTemporaryName.h"

#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

constexpr std::string_view kExtension = "TMP";

} // namespace

std::string numberedTemporary(const platform::PathParts& target, int number) {
    return target.drive + target.directory + "ini$$" + std::to_string(number) + "." +
           std::string(kExtension);
}

std::string siblingTemporary(const std::string& target) {
    const std::size_t separator = target.find_last_of("\\/");
    const std::size_t dot = target.rfind('.');
    const bool replaces = separator != std::string::npos && dot != std::string::npos &&
                          dot > separator && target.substr(dot + 1) != kExtension;
    return (replaces ? target.substr(0, dot) : target) + "." + std::string(kExtension);
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
