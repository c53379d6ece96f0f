#include "machine/machineDevices.h"

#include "machine/busTree.h"
#include "machine/machineBus.h"
#include "platform/busLocation.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace machine {

namespace {

using pcibus::PciFunction;
using platform::kNoSystemError;
using platform::kNotFound;
using platform::PropertyRead;
using platform::SystemCode;

struct Property {
    std::string_view name;
    std::uint32_t (*value)(const PciFunction& function);
};

constexpr Property kProperties[] = {
    {"busType", [](const PciFunction&) { return platform::kPciBusType; }},
    {"pciVendorID", [](const PciFunction& f) -> std::uint32_t { return f.vendorId; }},
    {"pciDeviceID", [](const PciFunction& f) -> std::uint32_t { return f.deviceId; }},
    {"pciSubsystemVendorID",
     [](const PciFunction& f) -> std::uint32_t { return f.subsystemVendorId; }},
    {"pciSubsystemID", [](const PciFunction& f) -> std::uint32_t { return f.subsystemId; }},
    {"pciBusNumber", [](const PciFunction& f) -> std::uint32_t { return f.bus; }},
    {"pciDeviceNumber", [](const PciFunction& f) -> std::uint32_t { return f.device; }},
    {"pciFunctionNumber", [](const PciFunction& f) -> std::uint32_t { return f.function; }},
};

// A function's identifiers and its position.
using Identified = std::pair<std::uint64_t, std::size_t>;

std::vector<Identified> sortedByIds(std::span<const PciFunction> functions) {
    std::vector<Identified> result;
    result.reserve(functions.size());
    for (const PciFunction& f : functions)
        result.emplace_back(f.ids().packed(), result.size());
    std::sort(result.begin(), result.end());
    return result;
}

PropertyRead failure(PropertyRead::Step step, SystemCode code) {
    PropertyRead read;
    read.step = step;
    read.code = code;
    return read;
}

class MachineDevices : public platform::PciDevices {
public:
    explicit MachineDevices(ReadAlready readAlready) : readAlready_(std::move(readAlready)) {}

    // The bus is read by the first call; a further list is one of the same bus.
    SystemCode open() override {
        listed_ = false;
        if (!machine_) {
            const std::optional<std::string> location = platform::deviceBusLocation();
            if (!location)
                return kNotFound;
            if (!takeOver(*location)) {
                const SystemCode code = readMachineBus(*location, machine_);
                if (code != kNoSystemError)
                    return code;
            }
            byIds_ = sortedByIds(machine_->bus.functions());
        }
        listed_ = true;
        return kNoSystemError;
    }

    bool has(std::size_t index) override {
        return listed_ && index < machine_->bus.functions().size();
    }

    std::size_t nextToAsk(std::size_t index, const platform::PciIds& sought) override {
        const Identified from{sought.packed(), index};
        const auto found = std::lower_bound(byIds_.begin(), byIds_.end(), from);
        return found != byIds_.end() && found->first == from.first ? found->second : byIds_.size();
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

    platform::DeviceTree* locate(std::size_t index, platform::DeviceNode& node) override {
        if (!has(index))
            return nullptr;
        if (!tree_)
            tree_ = std::make_unique<BusTree>(machine_);
        node = BusTree::nodeOf(machine_->bus.functions()[index]);
        return tree_.get();
    }

    void close() noexcept override { listed_ = false; }

private:
    // One reading for bridges and devices sees one state of the bus.
    bool takeOver(const std::string& location) {
        if (!readAlready_ || platform::busLocation() != location)
            return false;
        auto functions = readAlready_();
        if (!functions)
            return false;
        try {
            machine_ = std::make_shared<const MachineBus>(
                MachineBus{location, pcibus::Bus(std::move(*functions), pcibus::addressText)});
            return true;
        } catch (const pcibus::BusError&) {
            return false; // of somebody else's making
        }
    }

    ReadAlready readAlready_;
    std::shared_ptr<const MachineBus> machine_;
    std::vector<Identified> byIds_; // ascending
    std::unique_ptr<BusTree> tree_;
    bool listed_ = false;
};

} // namespace

std::unique_ptr<platform::PciDevices> makePciDevices(ReadAlready readAlready) {
    if (auto listed = platform::makeSystemDevices())
        return listed;
    return std::make_unique<MachineDevices>(std::move(readAlready));
}

} // namespace machine
