// The slot path text of a device, "0000:01:E0:00": segment 0, the number of its root bridge, then
// one hop (device * 8 | function) a level from the root down to the device. It follows from the
// system's tree of devices alone.
#pragma once

#include "platform/deviceTree.h"
#include "quil/tErrorStatus.h"

#include <array>
#include <optional>
#include <string>

namespace nZoTavManagerPciPlugin_15_0 {

// Replaces `text`, or leaves it and sets the status: kQuilErrDeviceQuery when `device` is no PCI
// device, a query fails or the tree has no end; zoquilerr_memoryFull. Does nothing when the status
// is negative already. Does not raise.
void deriveSlotPath(platform::DeviceTree& tree, platform::DeviceNode device, std::string& text,
                    nZOQUIL000::tErrorStatus& status) noexcept;

// What a property of a device is read into.
using tPropertyBuffer = std::array<char, 4>;

// The slot path of one device, derived when first asked for; after a failure the next request
// derives again. The tree must outlive the object.
class DerivedSlotPath {
public:
    DerivedSlotPath(platform::DeviceTree& tree, platform::DeviceNode device) noexcept
        : tree_(tree), device_(device) {}

    // The whole text; empty when the status is negative.
    const std::string& text(nZOQUIL000::tErrorStatus& status) noexcept;

    // Copies the text with its terminating zero when both fit; otherwise kQuilErrBufferTooSmall,
    // with the buffer as it was. The bound is that of a property: any device with a root bridge has
    // a longer text, for which there is text().
    void handOut(tPropertyBuffer& buffer, nZOQUIL000::tErrorStatus& status) noexcept;

private:
    platform::DeviceTree& tree_;
    platform::DeviceNode device_;
    std::string text_;
};

} // namespace nZoTavManagerPciPlugin_15_0
