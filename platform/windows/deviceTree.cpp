#include "platform/deviceTree.h"

#include "platform/windows/setupDeviceTree.h"

#include <strings.h>

namespace platform {

namespace {

// The tree of all present devices, with a list of its own.
class OwnDeviceTree final : public SetupDeviceTree {
public:
    explicit OwnDeviceTree(DeviceInfoList list) noexcept
        : SetupDeviceTree(list.get()), owner_(std::move(list)) {}

private:
    DeviceInfoList owner_;
};

} // namespace

// A list that cannot be made leaves a tree in which nothing is found.
std::unique_ptr<DeviceTree> makeDeviceTree() {
    return std::make_unique<OwnDeviceTree>(listPresentDevices());
}

bool findPciFunction(DeviceTree& tree, std::uint8_t bus, std::uint8_t device, std::uint8_t function,
                     DeviceNode& result) {
    auto* const known = dynamic_cast<SetupDeviceTree*>(&tree);
    if (known == nullptr)
        return false;
    const std::uint32_t sought = std::uint32_t{device} << 16 | function;
    SP_DEVINFO_DATA listed = emptyDeviceInfo();
    for (DWORD index = 0; SetupDiEnumDeviceInfo(known->list(), index, &listed); ++index) {
        char enumerator[16] = {};
        std::uint32_t address = 0;
        DWORD number = 0;
        const DeviceNode node = known->add(listed);
        if (known->enumeratorName(node, enumerator, sizeof enumerator) &&
            strcasecmp(enumerator, "PCI") == 0 && known->address(node, address) &&
            address == sought &&
            SetupDiGetDeviceRegistryPropertyA(known->list(), &listed, SPDRP_BUSNUMBER, nullptr,
                                              reinterpret_cast<BYTE*>(&number), sizeof number,
                                              nullptr) &&
            number == bus) {
            result = node;
            return true;
        }
    }
    return false;
}

} // namespace platform
