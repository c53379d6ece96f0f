// Where a PCI function sits, independent of bus numbers, which change from boot to boot: a root bus
// and the hop (device and function) taken below each bridge. Read from and written to the machine
// form "MR00:E0,00" that the bridge library speaks, and edited by the relative form "d2f0,-,f1" of
// traversal maps.
#pragma once

#include "quil/tErrorStatus.h"

#include <cstdint>
#include <list>
#include <string>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

inline constexpr std::int32_t kSlotPathErrBadText = -313325;   // text that is no slot path
inline constexpr std::int32_t kSlotPathErrEmptyPath = -313324; // an "f" step on a path without hops

// Every operation takes the caller's status last and does nothing when that status is negative
// already. When `state` is negative, it is copied into the caller's status and nothing else is
// done. Memory that runs out sets nZOQUIL000::zoquilerr_memoryFull. Nothing raises.
class cSlotPath {
public:
    using tErrorStatus = nZOQUIL000::tErrorStatus;

    cSlotPath() = default;
    // A copy that runs out of memory says so in its `state`.
    cSlotPath(const cSlotPath& other);
    cSlotPath& operator=(const cSlotPath&) = delete;
    virtual ~cSlotPath() = default;

    // Replaces the path with the one in the machine form: an optional root part ("MR" and two
    // hexadecimal digits and ":", or a decimal number and ":"), then hops of two hexadecimal digits
    // each, separated by ",". A trailing comma is accepted. kSlotPathErrBadText for a hop that
    // cannot be read; the hops before it stay.
    void ParseMachineText(std::string_view machineText, tErrorStatus& status);

    // Write the machine form; ToString replaces `result`.
    void FormatMachineText(std::string& result, tErrorStatus& status) const;
    void ToString(std::string& result, tErrorStatus& status) const;

    // Writes the hops alone, "E0,00"; an empty text for a path without hops. As Clear, part of the
    // interface that the plug-in itself does not use.
    void FormatHops(std::string& result, tErrorStatus& status) const;

    // Puts (device * 8 | function), cut to 8 bits, at the front: the end nearest the function.
    void PrependHop(std::int32_t device, std::int32_t function, tErrorStatus& status);

    // Applies steps from left to right: "d2f0" goes down to device 2 function 0, "-" goes up,
    // "f1" changes the function of the nearest hop. An empty text changes nothing.
    // kSlotPathErrBadText or kSlotPathErrEmptyPath for a step that cannot be taken; the steps
    // before it stay applied.
    void ApplyRelativePath(std::string_view steps, tErrorStatus& status);

    // Removes every hop; the root bus stays.
    void Clear(tErrorStatus& status);

    // Nearest the function first, the hop on the root bus last; (device * 8) | function each.
    std::list<std::uint8_t> hops;

    std::uint8_t rootBus = 0;

    // An error met while the path was built.
    tErrorStatus state;

private:
    [[nodiscard]] bool mayProceed(tErrorStatus& status) const;
    void applyStep(std::string_view step, tErrorStatus& status);
    void goUp(tErrorStatus& status);
    void changeFunction(std::string_view step, tErrorStatus& status);
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
