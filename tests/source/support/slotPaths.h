// Slot paths from and to their machine form.
#pragma once

#include "pxidrivertools/cSlotPath.h"

#include <stdexcept>
#include <string>

namespace testsupport {

inline nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cSlotPath
slotPath(const std::string& text) {
    nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cSlotPath path;
    nZOQUIL000::tErrorStatus status;
    path.ParseMachineText(text, status);
    std::string back;
    path.ToString(back, status);
    if (status.failed() || back != text)
        throw std::logic_error("no slot path: " + text);
    return path;
}

inline std::string
textOf(const nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cSlotPath& path) {
    nZOQUIL000::tErrorStatus status;
    std::string text;
    path.ToString(text, status);
    if (status.failed())
        throw std::logic_error("a slot path in error");
    return text;
}

} // namespace testsupport
