#include "tavctl/mock/qemuOptions.h"

#include "pcibus/pciFunction.h"
#include "tavctl/bus/linkState.h"
#include "tavctl/mock/plan.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <string_view>

namespace tavctl::mock {

namespace {

using nZoTavManagerPciPlugin_15_0::tPciIds;

// What a device of QEMU's is told beside its place.
enum class Wiring {
    endpoint,
    pcieSlot,     // a chassis and a slot
    widePort,     // the same, and a link
    upstreamPort, // nothing
    conventional, // a number of its chassis
};

struct QemuDevice {
    std::string_view name;
    tPciIds ids;
    Wiring wiring;
};

constexpr QemuDevice kDevices[] = {
    {"ioh3420", {0x8086, 0x3420, 0x8086, 0x0000}, Wiring::pcieSlot},
    {"pcie-root-port", {0x1B36, 0x000C, 0x1B36, 0x0000}, Wiring::widePort},
    {"x3130-upstream", {0x104C, 0x8232, 0, 0}, Wiring::upstreamPort},
    {"xio3130-downstream", {0x104C, 0x8233, 0, 0}, Wiring::pcieSlot},
    {"pcie-pci-bridge", {0x1B36, 0x000E, 0, 0}, Wiring::upstreamPort},
    {"pci-bridge", {0x1B36, 0x0001, 0, 0}, Wiring::conventional},
    {"i82801b11-bridge", {0x8086, 0x244E, 0, 0}, Wiring::upstreamPort},
    {"e1000e,romfile=", {0x8086, 0x10D3, 0x8086, 0x0000}, Wiring::endpoint},
    {"e1000,romfile=", {0x8086, 0x100E, 0x1AF4, 0x1100}, Wiring::endpoint},
    {"rtl8139,romfile=", {0x10EC, 0x8139, 0x1AF4, 0x1100}, Wiring::endpoint},
    {"pci-serial", {0x1B36, 0x0002, 0x1AF4, 0x1100}, Wiring::endpoint},
    {"pci-testdev", {0x1B36, 0x0005, 0x1AF4, 0x1100}, Wiring::endpoint},
    {"virtio-rng-pci", {0x1AF4, 0x1005, 0x1AF4, 0x0004}, Wiring::endpoint},
};

constexpr const char* kMainBus = "pcie.0";
// Where q35 has devices of its own.
constexpr unsigned kOwnDevice = 0x1F;

const QemuDevice* deviceFor(const tPciIds& ids) {
    const auto found = std::find_if(std::begin(kDevices), std::end(kDevices),
                                    [&](const QemuDevice& each) { return each.ids == ids; });
    return found == std::end(kDevices) ? nullptr : &*found;
}

std::string idsOf(const tPciIds& ids) {
    return fmt::format("{:04X}:{:04X} subsystem {:04X}:{:04X}", ids.vendor, ids.device,
                       ids.subsystemVendor, ids.subsystem);
}

// "2_5" and "8", as the option has it.
std::string speedValue(std::uint8_t code) {
    std::string name = linkSpeedName(code);
    name.erase(name.find(' '));
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
}

class OptionWriter {
public:
    explicit OptionWriter(std::string& text) : text_(text) {}

    void write(const Machine& machine) {
        static const Functions kNone;
        const auto main = machine.roots.find(0);
        const Functions& own = main == machine.roots.end() ? kNone : main->second;
        for (const auto& [root, functions] : machine.roots) {
            if (root == 0) {
                writeBus(functions, kMainBus);
                continue;
            }
            const std::string bus = fmt::format("root{:02x}", root);
            text_ += fmt::format("-device pxb-pcie,id={},bus={},addr={:02x}.0,bus_nr={}\n", bus,
                                 kMainBus, freeDevice(own), root);
            writeBus(functions, bus);
        }
        if (!unknown_.empty())
            refuse("--qemu", fmt::format("QEMU has no device with the identifiers {}",
                                         enumerated({unknown_.begin(), unknown_.end()})));
    }

private:
    unsigned freeDevice(const Functions& main) {
        for (unsigned device = kOwnDevice; --device > 0;) {
            const auto first = main.lower_bound(static_cast<std::uint8_t>(device << 3U));
            const bool isFree = first == main.end() || pcibus::deviceOfHop(first->first) != device;
            if (isFree && rootDevices_.insert(device).second)
                return device;
        }
        refuse("--qemu", "root bus 00 has no room for another root bus");
    }

    void writeBus(const Functions& functions, const std::string& bus) {
        for (const auto& [hop, function] : functions) {
            const auto device = static_cast<std::uint8_t>(hop & 0xF8U);
            const auto others = std::distance(
                functions.lower_bound(device),
                functions.upper_bound(static_cast<std::uint8_t>(device | pcibus::kMaxFunction)));
            if (function->deviceClass != kHostBridgeClass)
                writeFunction(*function, hop, bus, others > 1);
        }
    }

    void writeFunction(const Function& function, std::uint8_t hop, const std::string& bus,
                       bool isMultiFunction) {
        const QemuDevice* const device = deviceFor(function.ids);
        const bool isBridge = device != nullptr && device->wiring != Wiring::endpoint;
        if (device == nullptr || isBridge != function.isBridge()) {
            unknown_.insert(idsOf(function.ids));
            writeBus(function.below, bus); // for what is unknown there too
            return;
        }
        if (function.wishedBus != 0)
            refuse(function.wishPlace, "it is the firmware of QEMU's machine that numbers buses");
        const std::string id = fmt::format("p{}", ++number_);
        text_ += fmt::format("-device {},id={},bus={},addr={:02x}.{}", device->name, id, bus,
                             pcibus::deviceOfHop(hop), pcibus::functionOfHop(hop));
        if (isMultiFunction)
            text_ += ",multifunction=on";
        if (device->wiring == Wiring::pcieSlot || device->wiring == Wiring::widePort)
            text_ += fmt::format(",chassis={},slot={}", number_ % 256U, number_);
        if (device->wiring == Wiring::conventional)
            text_ += fmt::format(",chassis_nr={}", number_ % 256U);
        if (device->wiring == Wiring::widePort) {
            text_ += fmt::format(",x-width={},x-speed={}", function.link.maximumWidth,
                                 speedValue(function.link.maximumSpeed));
            if (function.reserve != 0)
                text_ += fmt::format(",bus-reserve={}", function.reserve);
        } else if (function.reserve != 0) {
            refuse("--qemu", fmt::format("QEMU's {} keeps no bus numbers free", device->name));
        }
        text_ += '\n';
        if (device->wiring != Wiring::widePort && function.isCounted)
            refuse("--qemu",
                   fmt::format("the link of QEMU's {} has the width that it has", device->name));
        writeBus(function.below, id);
    }

    std::string& text_;
    unsigned number_ = 0;
    std::set<unsigned> rootDevices_;
    std::set<std::string> unknown_;
};

} // namespace

std::string qemuOptions(const Machine& machine, const std::vector<std::string>& comments) {
    std::string text;
    for (const std::string& comment : comments)
        text += fmt::format("# {}\n", comment);
    text += '\n';
    OptionWriter(text).write(machine);
    return text;
}

} // namespace tavctl::mock
