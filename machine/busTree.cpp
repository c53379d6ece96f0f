#include "machine/busTree.h"

#include "pcibus/address.h"
#include "platform/entryType.h"
#include "platform/folderReader.h"
#include "platform/pathBelow.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>

namespace machine {

namespace {

using platform::DeviceNode;

// A function's node is its handle; the others follow behind the last possible one.
constexpr DeviceNode kFirstRoot = 0x10000;
constexpr DeviceNode kMachine = kFirstRoot + pcibus::Bus::kBusCount;

constexpr DeviceNode rootNode(std::size_t bus) {
    return kFirstRoot + bus;
}

std::string busText(std::size_t bus) {
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "%02zx", bus);
    return text.data();
}

// Empty when the firmware does not describe the root bridge. Identifiers are eight characters or a
// few more.
std::string hardwareId(const std::string& rootFolder) {
    std::array<std::uint8_t, 64> bytes{};
    std::size_t size = 0;
    if (platform::FolderReader(rootFolder).readFirst("firmware_node/hid", bytes, size) != 0)
        return {};
    const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(size);
    return {bytes.begin(), std::find(bytes.begin(), end, '\n')};
}

bool copyText(std::string_view text, char* buffer, std::size_t capacity) {
    if (text.empty() || text.size() >= capacity)
        return false;
    std::memcpy(buffer, text.data(), text.size());
    buffer[text.size()] = '\0';
    return true;
}

} // namespace

// A root bridge is there with or without functions below it.
BusTree::BusTree(std::shared_ptr<const MachineBus> machine) : machine_(std::move(machine)) {
    if (!machine_)
        return;
    others_[kMachine] = "MACHINE\\0";
    for (std::size_t bus = 0; bus < pcibus::Bus::kBusCount; ++bus) {
        const auto number = static_cast<std::uint8_t>(bus);
        if (machine_->bus.parentOfBus(number) != nullptr)
            continue;
        const std::string folder = platform::pathBelow(
            platform::pathBelow(machine_->location, "devices"), "pci0000:" + busText(bus));
        if (machine_->bus.functionsOn(number).empty() &&
            platform::typeOfEntry(folder) != std::filesystem::file_type::directory)
            continue;
        const std::string id = hardwareId(folder);
        others_[rootNode(bus)] = (id.empty() ? "BUS\\PCI" : "ACPI\\" + id) + "\\" + busText(bus);
    }
}

platform::DeviceNode BusTree::nodeOf(const pcibus::PciFunction& function) {
    return function.handle();
}

const pcibus::PciFunction* BusTree::functionOf(DeviceNode node) const {
    if (!machine_ || node >= kFirstRoot)
        return nullptr;
    return machine_->bus.find(static_cast<std::uint32_t>(node));
}

std::string BusTree::identifierOf(DeviceNode node) const {
    if (const pcibus::PciFunction* const function = functionOf(node))
        return "PCI\\0000:" + pcibus::addressText(*function);
    const auto other = others_.find(node);
    return other == others_.end() ? std::string() : other->second;
}

bool BusTree::enumeratorName(DeviceNode node, char* buffer, std::size_t capacity) {
    const std::string id = identifierOf(node);
    return copyText(std::string_view(id).substr(0, id.find('\\')), buffer, capacity);
}

bool BusTree::address(DeviceNode node, std::uint32_t& value) {
    const pcibus::PciFunction* const function = functionOf(node);
    if (function == nullptr)
        return false;
    value = std::uint32_t{function->device} << 16 | function->function;
    return true;
}

bool BusTree::parent(DeviceNode node, DeviceNode& result) {
    if (const pcibus::PciFunction* const function = functionOf(node)) {
        const pcibus::PciFunction* const bridge = machine_->bus.parentOfBus(function->bus);
        result = bridge != nullptr ? nodeOf(*bridge) : rootNode(function->bus);
        return true;
    }
    if (node == kMachine || !others_.contains(node))
        return false;
    result = kMachine;
    return true;
}

bool BusTree::firstChild(DeviceNode node, DeviceNode& result) {
    if (!machine_)
        return false;
    if (node == kMachine) {
        if (others_.begin()->first == kMachine)
            return false;
        result = others_.begin()->first;
        return true;
    }
    const pcibus::PciFunction* const bridge = functionOf(node);
    std::uint8_t bus = 0;
    if (bridge != nullptr) {
        // Where two bridges claim one bus, it is below the one that counts as its parent.
        bus = bridge->secondaryBus;
        if (machine_->bus.parentOfBus(bus) != bridge)
            return false;
    } else if (others_.contains(node)) {
        bus = static_cast<std::uint8_t>(node - kFirstRoot);
    } else {
        return false;
    }
    const std::span<const pcibus::PciFunction> below = machine_->bus.functionsOn(bus);
    if (below.empty())
        return false;
    result = nodeOf(below.front());
    return true;
}

bool BusTree::nextSibling(DeviceNode node, DeviceNode& result) {
    if (const pcibus::PciFunction* const function = functionOf(node)) {
        const std::span<const pcibus::PciFunction> all = machine_->bus.functionsOn(function->bus);
        const auto next = static_cast<std::size_t>(function - all.data()) + 1;
        if (next == all.size())
            return false;
        result = nodeOf(all[next]);
        return true;
    }
    const auto next = others_.upper_bound(node);
    if (!others_.contains(node) || next == others_.end() || next->first == kMachine)
        return false;
    result = next->first;
    return true;
}

bool BusTree::identifier(DeviceNode node, char* buffer, std::size_t capacity) {
    return copyText(identifierOf(node), buffer, capacity);
}

bool BusTree::open(const char* identifier, DeviceNode& result) {
    for (const auto& [node, id] : others_) {
        if (id == identifier) {
            result = node;
            return true;
        }
    }
    constexpr std::string_view kEnumerator = "PCI\\";
    const std::string_view text = identifier;
    if (!text.starts_with(kEnumerator))
        return false;
    const auto address = pcibus::readAddress(text.substr(kEnumerator.size()));
    if (!address)
        return false;
    // Only a text that is written just so names the function.
    pcibus::PciFunction named;
    named.bus = address->bus;
    named.device = address->device & pcibus::kMaxDevice;
    named.function = address->function & pcibus::kMaxFunction;
    const DeviceNode node = nodeOf(named);
    if (functionOf(node) == nullptr || identifierOf(node) != identifier)
        return false;
    result = node;
    return true;
}

} // namespace machine
