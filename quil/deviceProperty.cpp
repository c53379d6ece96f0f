#include "quil/deviceProperty.h"

#include "quil/quilStatus.h"
#include "quil/systemStatus.h"

#include <bit>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0 {

namespace {

using nZOQUIL000::kComponent;
using nZOQUIL000::tErrorSite;
using nZOQUIL000::tErrorStatus;
using platform::PropertyRead;

// The places that error records name.
constexpr const char* kDeviceFile = "zoquil\\protons\\enumeration\\windows\\tdeviceiterator";
constexpr const char* kKeyFile = "zoquil\\protons\\driver\\twinregistrykey";
constexpr tErrorSite kHardwareKeySite{kDeviceFile, 130, kComponent, "status"};
constexpr tErrorSite kBusPropertiesSite{kKeyFile, 313, kComponent, "status"};
constexpr tErrorSite kTooLongSite{kKeyFile, 97, kComponent, "kQuilErrBufferTooSmall"};
constexpr tErrorSite kValueSite{kKeyFile, 102, kComponent, "status"};

const tErrorSite& siteOf(PropertyRead::Step step) noexcept {
    switch (step) {
    case PropertyRead::Step::hardwareKey:
        return kHardwareKeySite;
    case PropertyRead::Step::busProperties:
        return kBusPropertiesSite;
    default:
        return kValueSite;
    }
}

void setReadError(tErrorStatus& status, const PropertyRead& read) noexcept {
    if (read.step == PropertyRead::Step::value && read.tooLong) {
        nZOQUIL000::setError(status, nZOQUIL000::kQuilErrBufferTooSmall, kTooLongSite);
        return;
    }
    tErrorSite site = siteOf(read.step);
    if (read.code != platform::kNoSystemError) {
        nZOQUIL000::setSystemError(status, read.code, site);
        return;
    }
    // A failure is one also where the system does not say why.
    site.error_constant = "kQuilErrDeviceQuery";
    nZOQUIL000::setError(status, nZOQUIL000::kQuilErrDeviceQuery, site);
}

void readSlotPath(tEnumeratedDevice& device, tPropertyBuffer& value, tErrorStatus& status) {
    if (!device.slotPath) {
        platform::DeviceNode node = 0;
        platform::DeviceTree* const tree = device.devices.locate(device.index, node);
        if (tree == nullptr) {
            nZOQUIL000::setError(status, nZOQUIL000::kQuilErrDeviceQuery,
                                 nZOQUIL000::siteHere(kDeviceFile, "kQuilErrDeviceQuery"));
            return;
        }
        device.slotPath.emplace(*tree, node);
    }
    device.slotPath->handOut(value, status);
}

} // namespace

void readProperty(tEnumeratedDevice& device, const char* name, tPropertyBuffer& value,
                  tErrorStatus& status) {
    if (status.failed())
        return;
    if (std::string_view(name) == kSlotPathProperty) {
        readSlotPath(device, value, status);
        return;
    }
    const PropertyRead read = device.devices.readProperty(device.index, name);
    if (read.step != PropertyRead::Step::done)
        setReadError(status, read);
    else
        value = std::bit_cast<tPropertyBuffer>(read.value);
}

std::uint32_t readNumber(tEnumeratedDevice& device, const char* name, tErrorStatus& status) {
    tPropertyBuffer buffer{};
    readProperty(device, name, buffer, status);
    return std::bit_cast<std::uint32_t>(buffer);
}

} // namespace nZoTavManagerPciPlugin_15_0
