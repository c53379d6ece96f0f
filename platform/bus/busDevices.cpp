#include "platform/bus/busDevices.h"

#include "platform/bus/busTree.h"
#include "platform/bus/machineBus.h"

#include <string_view>

namespace platform {

namespace {

constexpr std::uint32_t kPciBusType = 0x20706369;

struct Property {
    std::string_view name;
    std::uint32_t (*value)(const pcibus::PciFunction& function);
};

using pcibus::PciFunction;

constexpr Property kProperties[] = {
    {"busType", [](const PciFunction&) { return kPciBusType; }},
    {"pciVendorID", [](const PciFunction& f) -> std::uint32_t { return f.vendorId; }},
    {"pciDeviceID", [](const PciFunction& f) -> std::uint32_t { return f.deviceId; }},
    {"pciSubsystemVendorID",
     [](const PciFunction& f) -> std::uint32_t { return f.subsystemVendorId; }},
    {"pciSubsystemID", [](const PciFunction& f) -> std::uint32_t { return f.subsystemId; }},
    {"pciBusNumber", [](const PciFunction& f) -> std::uint32_t { return f.bus; }},
    {"pciDeviceNumber", [](const PciFunction& f) -> std::uint32_t { return f.device; }},
    {"pciFunctionNumber", [](const PciFunction& f) -> std::uint32_t { return f.function; }},
};

PropertyRead failure(PropertyRead::Step step, SystemCode code) {
    PropertyRead read;
    read.step = step;
    read.code = code;
    return read;
}

class BusDevices : public PciDevices {
public:
    explicit BusDevices(BusLocator locator) : locate_(locator) {}

    // The bus is read by the first call; a further list is one of the same bus.
    SystemCode open() override {
        listed_ = false;
        if (!machine_) {
            const std::optional<std::string> location = locate_();
            const SystemCode code = location ? readMachineBus(*location, machine_) : kNotFound;
            if (code != kNoSystemError)
                return code;
        }
        listed_ = true;
        return kNoSystemError;
    }

    bool has(std::size_t index) override {
        return listed_ && index < machine_->bus.functions().size();
    }

    PropertyRead readProperty(std::size_t index, const char* name) override {
        if (!has(index))
            return failure(PropertyRead::Step::hardwareKey, kNotFound);
        for (const Property& property : kProperties) {
            if (property.name == name) {
                PropertyRead read;
                read.value = property.value(machine_->bus.functions()[index]);
                return read;
            }
        }
        return failure(PropertyRead::Step::value, kNotFound);
    }

    DeviceTree* locate(std::size_t index, DeviceNode& node) override {
        if (!has(index))
            return nullptr;
        if (!tree_)
            tree_ = std::make_unique<BusTree>(machine_);
        node = BusTree::nodeOf(machine_->bus.functions()[index]);
        return tree_.get();
    }

    void close() noexcept override { listed_ = false; }

private:
    BusLocator locate_;
    std::shared_ptr<const MachineBus> machine_;
    std::unique_ptr<BusTree> tree_;
    bool listed_ = false;
};

} // namespace

std::unique_ptr<PciDevices> makeBusDevices(BusLocator locate) {
    return std::make_unique<BusDevices>(locate);
}

} // namespace platform
