#include "tavctl/description/oddNames.h"

#include "pxidrivertools/asciiText.h"

#include <algorithm>
#include <string>

namespace tavctl::lint {

namespace {

using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::toUpper;

constexpr std::string_view kExtension = "ini";

bool isSameName(std::string_view name, std::string_view other) noexcept {
    return std::equal(name.begin(), name.end(), other.begin(), other.end(),
                      [](char a, char b) { return toUpper(a) == toUpper(b); });
}

// Behind the last dot; a name that begins with its only dot has none.
std::string_view extensionOf(std::string_view name) noexcept {
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

} // namespace

bool isDescriptionName(std::string_view name) noexcept {
    const std::size_t dot = name.rfind('.');
    return dot != std::string_view::npos && isSameName(name.substr(dot + 1), kExtension);
}

bool hasDescriptionShortName(std::string_view name) {
    std::string extension(extensionOf(name));
    std::erase(extension, ' '); // short names have no blanks
    return !isDescriptionName(name) &&
           isSameName(std::string_view(extension).substr(0, kExtension.size()), kExtension);
}

bool isExplorersName(std::string_view name) noexcept {
    return isSameName(name, "desktop.ini");
}

} // namespace tavctl::lint
