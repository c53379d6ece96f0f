// The devices that the device installation functions list as present, and the values that the PCI
// bus driver publishes in their hardware keys.
#include "platform/pciDevices.h"

#include "platform/busLocation.h"
#include "platform/windows/setupDeviceTree.h"

namespace platform {

namespace {

constexpr REGSAM kAccess = KEY_READ;
static_assert(kAccess == 0x20019);

PropertyRead failure(PropertyRead::Step step, SystemCode code) {
    PropertyRead read;
    read.step = step;
    read.code = code;
    return read;
}

class SetupDevices final : public PciDevices {
public:
    SystemCode open() override {
        close();
        list_ = listPresentDevices();
        return list_ ? kNoSystemError : lastFailureCode();
    }

    bool has(std::size_t index) override {
        SP_DEVINFO_DATA device = emptyDeviceInfo();
        return find(index, device);
    }

    PropertyRead readProperty(std::size_t index, const char* name) override {
        using Step = PropertyRead::Step;
        SP_DEVINFO_DATA device = emptyDeviceInfo();
        if (!find(index, device))
            return failure(Step::hardwareKey, lastFailureCode());
        const HKEY opened =
            SetupDiOpenDevRegKey(list_.get(), &device, DICS_FLAG_GLOBAL, 0, DIREG_DEV, kAccess);
        if (opened == INVALID_HANDLE_VALUE)
            return failure(Step::hardwareKey, lastFailureCode());
        const RegistryKey hardware(opened);
        RegistryKey properties;
        LSTATUS code = RegOpenKeyExA(hardware.get(), "BusProperties", 0, kAccess, properties.out());
        if (code != ERROR_SUCCESS)
            return failure(Step::busProperties, static_cast<SystemCode>(code));
        PropertyRead read;
        DWORD size = sizeof read.value;
        code = RegQueryValueExA(properties.get(), name, nullptr, nullptr,
                                reinterpret_cast<BYTE*>(&read.value), &size);
        if (code == ERROR_SUCCESS)
            return read;
        PropertyRead failed = failure(Step::value, static_cast<SystemCode>(code));
        failed.tooLong = code == ERROR_MORE_DATA;
        return failed;
    }

    DeviceTree* locate(std::size_t index, DeviceNode& node) override {
        SP_DEVINFO_DATA device = emptyDeviceInfo();
        if (!find(index, device))
            return nullptr;
        if (!tree_)
            tree_ = std::make_unique<SetupDeviceTree>(list_.get());
        node = tree_->add(device);
        return tree_.get();
    }

    void close() noexcept override {
        tree_.reset();
        list_.reset();
    }

private:
    bool find(std::size_t index, SP_DEVINFO_DATA& device) const {
        return list_ && SetupDiEnumDeviceInfo(list_.get(), static_cast<DWORD>(index), &device);
    }

    DeviceInfoList list_;
    std::unique_ptr<SetupDeviceTree> tree_; // over the list
};

} // namespace

std::unique_ptr<PciDevices> makeSystemDevices() {
    if (deviceBusLocation())
        return nullptr;
    return std::make_unique<SetupDevices>();
}

} // namespace platform
