#include "tests/support/busBuilder.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace testsupport {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kLastBus = 255;

// Where the capabilities are put: power management always, the others where there is need.
constexpr std::uint8_t kPowerAt = 0x40;
constexpr std::uint8_t kSubsystemAt = 0x50;
constexpr std::uint8_t kExpressAt = 0x60;

void require(bool condition, const char* what) {
    if (!condition)
        throw std::logic_error(std::string("BusBuilder: ") + what);
}

template <class... Values>
std::string formatted(const char* format, Values... values) {
    char text[128];
    const int length = std::snprintf(text, sizeof text, format, values...);
    require(length >= 0 && static_cast<std::size_t>(length) < sizeof text, "text too long");
    return text;
}

void put16(std::vector<std::uint8_t>& bytes, std::size_t offset, unsigned value) {
    bytes[offset] = static_cast<std::uint8_t>(value & 0xFF);
    bytes[offset + 1] = static_cast<std::uint8_t>(value >> 8 & 0xFF);
}

void writeFile(const fs::path& file, const std::string& text) {
    std::ofstream stream(file, std::ios::binary);
    stream << text;
    stream.close();
    if (!stream)
        throw std::runtime_error("cannot write " + file.string());
}

const char* speedText(unsigned speed) {
    static constexpr const char* kTexts[] = {"Unknown",       "2.5 GT/s PCIe",  "5.0 GT/s PCIe",
                                             "8.0 GT/s PCIe", "16.0 GT/s PCIe", "32.0 GT/s PCIe",
                                             "64.0 GT/s PCIe"};
    return speed < std::size(kTexts) ? kTexts[speed] : kTexts[0];
}

constexpr unsigned kBridgeClass = 0x060400;
constexpr unsigned kEndpointClass = 0x078000;
constexpr unsigned kRevision = 1;

} // namespace

BusBuilder::Node BusBuilder::add(Kind kind, std::size_t parent, unsigned rootBus, unsigned device,
                                 unsigned function, Ids ids, unsigned width, unsigned speed) {
    require(rootBus <= kLastBus, "root bus out of range");
    require(device <= 31, "device out of range");
    require(function <= 7, "function out of range");
    require(width <= 63, "link width out of range");
    require(speed <= 15, "link speed out of range");
    for (const Entry& other : entries_) {
        require(other.parent != parent || (parent == kNoParent && other.bus != rootBus) ||
                    other.device != device || other.function != function,
                "two functions in one place");
    }
    Entry made;
    made.kind = kind;
    made.parent = parent;
    made.device = static_cast<std::uint8_t>(device);
    made.function = static_cast<std::uint8_t>(function);
    made.ids = ids;
    made.width = static_cast<std::uint8_t>(width);
    made.speed = static_cast<std::uint8_t>(speed);
    made.bus = static_cast<std::uint8_t>(rootBus);
    entries_.push_back(made);
    numbered_ = false;
    return {entries_.size() - 1};
}

BusBuilder::Node BusBuilder::rootPort(unsigned rootBus, unsigned device, unsigned function, Ids ids,
                                      unsigned width, unsigned speed) {
    return add(Kind::rootPort, kNoParent, rootBus, device, function, ids, width, speed);
}

BusBuilder::Node BusBuilder::bridge(Node parent, unsigned device, unsigned function, Ids ids,
                                    unsigned width, unsigned speed) {
    require(parent.index < entries_.size() && entries_[parent.index].isBridge(),
            "the parent is no bridge");
    const bool belowUpstream = entries_[parent.index].kind == Kind::upstream;
    return add(belowUpstream ? Kind::downstream : Kind::upstream, parent.index, 0, device, function,
               ids, width, speed);
}

BusBuilder::Node BusBuilder::endpoint(Node parent, unsigned device, unsigned function, Ids ids,
                                      unsigned width, unsigned speed) {
    require(parent.index < entries_.size() && entries_[parent.index].isBridge(),
            "the parent is no bridge");
    return add(Kind::endpoint, parent.index, 0, device, function, ids, width, speed);
}

BusBuilder::Node BusBuilder::rootEndpoint(unsigned rootBus, unsigned device, unsigned function,
                                          Ids ids) {
    return add(Kind::endpoint, kNoParent, rootBus, device, function, ids, 0, 0);
}

void BusBuilder::setSecondaryBus(Node bridge, unsigned bus) {
    require(entry(bridge).isBridge(), "only a bridge has a secondary bus");
    require(bus <= kLastBus, "bus out of range");
    entries_[bridge.index].writtenSecondary = static_cast<std::uint8_t>(bus);
}

void BusBuilder::poke(Node node, std::size_t offset, std::initializer_list<std::uint8_t> bytes) {
    require(node.index < entries_.size(), "unknown node");
    for (const std::uint8_t byte : bytes) {
        require(offset < kExtendedBytes, "offset out of range");
        entries_[node.index].poked[offset++] = byte;
    }
}

const BusBuilder::Entry& BusBuilder::entry(Node node) const {
    require(node.index < entries_.size(), "unknown node");
    number();
    return entries_[node.index];
}

bool BusBuilder::hasSibling(const Entry& entry) const {
    return std::any_of(entries_.begin(), entries_.end(), [&](const Entry& other) {
        return other.bus == entry.bus && other.device == entry.device &&
               other.function != entry.function;
    });
}

void BusBuilder::number() const {
    if (numbered_)
        return;
    std::vector<std::vector<std::size_t>> children(entries_.size());
    std::vector<std::size_t> tops;
    for (std::size_t i = 0; i < entries_.size(); ++i)
        (entries_[i].parent == kNoParent ? tops : children[entries_[i].parent]).push_back(i);
    for (auto& siblings : children) {
        std::sort(siblings.begin(), siblings.end(), [this](std::size_t a, std::size_t b) {
            return std::pair(entries_[a].device, entries_[a].function) <
                   std::pair(entries_[b].device, entries_[b].function);
        });
    }
    std::sort(tops.begin(), tops.end(), [this](std::size_t a, std::size_t b) {
        return entries_[a].handle() < entries_[b].handle();
    });
    std::optional<unsigned> root;
    unsigned last = 0;
    for (const std::size_t top : tops) {
        if (root != entries_[top].bus) {
            require(!root || entries_[top].bus > last, "bus numbers run into the next root bus");
            root = last = entries_[top].bus;
        }
        last = numberBelow(top, last, children);
    }
    checkNumbers();
    numbered_ = true;
}

// Answers the last bus number taken.
unsigned BusBuilder::numberBelow(std::size_t index, unsigned last,
                                 const std::vector<std::vector<std::size_t>>& children) const {
    const Entry& at = entries_[index];
    if (!at.isBridge())
        return last;
    require(last < kLastBus, "no bus number left");
    at.secondary = static_cast<std::uint8_t>(++last);
    for (const std::size_t child : children[index]) {
        entries_[child].bus = at.secondary;
        last = numberBelow(child, last, children);
    }
    at.subordinate = static_cast<std::uint8_t>(last);
    return last;
}

void BusBuilder::checkNumbers() const {
    std::vector<int> owners(kLastBus + 1, 0);
    for (const Entry& each : entries_) {
        if (each.isBridge()) {
            require(each.bus < each.secondary && each.secondary <= each.subordinate,
                    "a bridge's buses are out of order");
            require(++owners[each.secondary] == 1, "two bridges share a secondary bus");
        }
        if (each.parent == kNoParent)
            continue;
        const Entry& parent = entries_[each.parent];
        require(each.bus == parent.secondary, "a function is not on its parent's bus");
        require(!each.isBridge() || each.subordinate <= parent.subordinate,
                "a bridge's buses reach beyond its parent's");
    }
    for (const Entry& each : entries_) {
        require(each.parent != kNoParent || owners[each.bus] == 0,
                "a root bus lies below a bridge");
    }
}

std::uint8_t BusBuilder::bus(Node node) const {
    return entry(node).bus;
}

std::uint8_t BusBuilder::secondaryBus(Node bridge) const {
    return entry(bridge).secondary;
}

std::uint8_t BusBuilder::subordinateBus(Node bridge) const {
    return entry(bridge).subordinate;
}

std::uint32_t BusBuilder::handle(Node node) const {
    return entry(node).handle();
}

std::string BusBuilder::address(Node node) const {
    const Entry& at = entry(node);
    return formatted("%02x:%02x.%x", unsigned{at.bus}, unsigned{at.device}, unsigned{at.function});
}

std::string BusBuilder::slotPath(Node node) const {
    const Entry* at = &entry(node);
    std::string hops;
    for (;;) {
        hops += formatted("%02X", unsigned{at->device} << 3 | at->function);
        if (at->parent == kNoParent)
            break;
        hops += ',';
        at = &entries_[at->parent];
    }
    return formatted("MR%02X:", unsigned{at->bus}) + hops;
}

std::uint8_t BusBuilder::writtenSecondary(const Entry& entry) const {
    return entry.writtenSecondary.value_or(entry.secondary);
}

std::vector<BusBuilder::Node> BusBuilder::nodes() const {
    number();
    std::vector<Node> sorted;
    for (std::size_t i = 0; i < entries_.size(); ++i)
        sorted.push_back({i});
    std::sort(sorted.begin(), sorted.end(), [this](Node a, Node b) {
        return entries_[a.index].handle() < entries_[b.index].handle();
    });
    return sorted;
}

void BusBuilder::setRunningLink(Node node, unsigned width, unsigned speed) {
    entries_.at(node.index).runningLink = {width, speed};
}

std::pair<unsigned, unsigned> BusBuilder::running(const Entry& entry) {
    return entry.runningLink.value_or(std::pair<unsigned, unsigned>(entry.width, entry.speed));
}

std::vector<pcibus::PciFunction> BusBuilder::functions() const {
    std::vector<pcibus::PciFunction> result;
    for (const Node node : nodes()) {
        const Entry& at = entry(node);
        pcibus::PciFunction function;
        function.bus = at.bus;
        function.device = at.device;
        function.function = at.function;
        function.headerType = at.isBridge() ? 1 : 0;
        function.vendorId = at.ids.vendor;
        function.deviceId = at.ids.device;
        function.subsystemVendorId = at.ids.subsystemVendor;
        function.subsystemId = at.ids.subsystem;
        if (at.isBridge()) {
            function.secondaryBus = writtenSecondary(at);
            function.subordinateBus = std::max(at.subordinate, writtenSecondary(at));
            function.linkWidth = at.width;
            function.linkSpeed = at.width == 0 ? std::uint8_t{0} : at.speed;
        }
        result.push_back(function);
    }
    return result;
}

std::vector<std::uint8_t> BusBuilder::configSpace(Node node) const {
    const Entry& at = entry(node);
    std::vector<std::uint8_t> bytes(kExtendedBytes, 0);
    put16(bytes, 0x00, at.ids.vendor);
    put16(bytes, 0x02, at.ids.device);
    put16(bytes, 0x04, 0x0006); // command: memory, bus master
    put16(bytes, 0x06, 0x0010); // status: has capabilities
    const unsigned classCode = at.isBridge() ? kBridgeClass : kEndpointClass;
    put16(bytes, 0x08, classCode << 8 | kRevision);
    put16(bytes, 0x0A, classCode >> 8);
    bytes[0x0E] = static_cast<std::uint8_t>((at.isBridge() ? 1 : 0) | (hasSibling(at) ? 0x80 : 0));
    bytes[0x34] = kPowerAt;
    bytes[kPowerAt] = 0x01;
    put16(bytes, kPowerAt + 2, 0x0003); // version of the capability

    std::uint8_t previous = kPowerAt;
    const auto append = [&](std::uint8_t identifier, std::uint8_t offset) {
        bytes[previous + std::size_t{1}] = offset;
        bytes[offset] = identifier;
        previous = offset;
    };
    if (at.isBridge()) {
        bytes[0x18] = at.bus;
        bytes[0x19] = writtenSecondary(at);
        bytes[0x1A] = std::max(at.subordinate, writtenSecondary(at));
        if (at.ids.subsystemVendor != 0 || at.ids.subsystem != 0) {
            append(0x0D, kSubsystemAt);
            put16(bytes, kSubsystemAt + 4, at.ids.subsystemVendor);
            put16(bytes, kSubsystemAt + 6, at.ids.subsystem);
        }
    } else {
        put16(bytes, 0x2C, at.ids.subsystemVendor);
        put16(bytes, 0x2E, at.ids.subsystem);
    }
    if (at.width != 0) {
        append(0x10, kExpressAt);
        constexpr unsigned kPortTypes[] = {0, 4, 5, 6}; // in the order of Kind
        put16(bytes, kExpressAt + 2, 2 | kPortTypes[static_cast<std::size_t>(at.kind)] << 4);
        const unsigned link = unsigned{at.speed} | unsigned{at.width} << 4;
        put16(bytes, kExpressAt + 0x0C, link); // capabilities
        bytes[kExpressAt + 0x0F] = 3;          // port number, above the link's fields
        const auto [width, speed] = running(at);
        put16(bytes, kExpressAt + 0x12, speed | width << 4); // status
    }
    for (const auto& [offset, byte] : at.poked)
        bytes[offset] = byte;
    return bytes;
}

std::string BusBuilder::dump(const DumpOptions& options) const {
    require(options.bytes <= kExtendedBytes, "more bytes than a function has");
    const char* const lineEnd = options.crLf ? "\r\n" : "\n";
    std::string text;
    for (const Node node : nodes()) {
        const Entry& at = entry(node);
        if (options.domain)
            text += formatted("%04x:", *options.domain);
        text += address(node);
        text += formatted(" %s: Device %04x:%04x (rev %02x)",
                          at.isBridge() ? "PCI bridge" : "Communication controller",
                          unsigned{at.ids.vendor}, unsigned{at.ids.device}, kRevision);
        text += lineEnd;
        if (options.verbose) {
            text += std::string("\tFlags: bus master, fast devsel, latency 0") + lineEnd;
            if (at.isBridge())
                text += formatted("\tBus: primary=%02x, secondary=%02x, subordinate=%02x, "
                                  "sec-latency=0",
                                  unsigned{at.bus}, unsigned{writtenSecondary(at)},
                                  unsigned{at.subordinate}) +
                        lineEnd;
            text += std::string("\tCapabilities: [40] Power Management version 3") + lineEnd;
        }
        const std::vector<std::uint8_t> bytes = configSpace(node);
        for (std::size_t i = 0; i < options.bytes; ++i) {
            if (i % 16 == 0)
                text += formatted("%02x:", static_cast<unsigned>(i));
            text += formatted(" %02x", unsigned{bytes[i]});
            if (i % 16 == 15 || i + 1 == options.bytes)
                text += lineEnd;
        }
        text += lineEnd;
    }
    return text;
}

void BusBuilder::writeSysfs(const fs::path& root, std::size_t configBytes) const {
    require(configBytes <= kExtendedBytes, "more bytes than a function has");
    fs::create_directories(root / "bus/pci/devices");
    std::vector<fs::path> folders(entries_.size()); // below devices/
    std::size_t rootBridges = 0;
    // By address, so that a bridge comes before what is below it.
    for (const Node node : nodes()) {
        const Entry& at = entry(node);
        const std::string name = "0000:" + address(node);
        if (at.parent != kNoParent) {
            folders[node.index] = folders[at.parent] / name;
        } else {
            const std::string rootBridge = formatted("pci0000:%02x", unsigned{at.bus});
            folders[node.index] = fs::path(rootBridge) / name;
            if (!fs::exists(root / "devices" / rootBridge)) {
                const fs::path firmware =
                    "LNXSYSTM:00/LNXSYBUS:00/" +
                    formatted("PNP0A08:%02x", static_cast<unsigned>(rootBridges++));
                fs::create_directories(root / "devices" / firmware);
                writeFile(root / "devices" / firmware / "hid", "PNP0A08\n");
                fs::create_directories(root / "devices" / rootBridge);
                fs::create_directory_symlink(".." / firmware,
                                             root / "devices" / rootBridge / "firmware_node");
            }
        }
        const fs::path folder = root / "devices" / folders[node.index];
        fs::create_directories(folder);
        fs::create_directory_symlink("../../../devices" / folders[node.index],
                                     root / "bus/pci/devices" / name);
        const std::vector<std::uint8_t> bytes = configSpace(node);
        writeFile(
            folder / "config",
            std::string(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(configBytes)));
        writeFile(folder / "vendor", formatted("0x%04x\n", unsigned{at.ids.vendor}));
        writeFile(folder / "device", formatted("0x%04x\n", unsigned{at.ids.device}));
        writeFile(folder / "subsystem_vendor",
                  formatted("0x%04x\n", unsigned{at.ids.subsystemVendor}));
        writeFile(folder / "subsystem_device", formatted("0x%04x\n", unsigned{at.ids.subsystem}));
        writeFile(folder / "class",
                  formatted("0x%06x\n", at.isBridge() ? kBridgeClass : kEndpointClass));
        if (at.width != 0) {
            writeFile(folder / "max_link_width", formatted("%u\n", unsigned{at.width}));
            writeFile(folder / "max_link_speed", std::string(speedText(at.speed)) + '\n');
            const auto [width, speed] = running(at);
            writeFile(folder / "current_link_width", formatted("%u\n", width));
            writeFile(folder / "current_link_speed", std::string(speedText(speed)) + '\n');
        }
    }
}

BusBuilder bigBus() {
    constexpr unsigned kRootPorts = 10;
    constexpr unsigned kDownstreamPorts = 23;
    constexpr unsigned kFunctions = 6; // and a seventh below the first kSevenths ports
    constexpr unsigned kSevenths = 1500 - kRootPorts * kDownstreamPorts * kFunctions;
    BusBuilder machine;
    unsigned ports = 0;
    for (unsigned switches = 0; switches < kRootPorts; ++switches) {
        const auto root = machine.rootPort(0, switches + 1, 0, {0x8086, 0xA110}, 8, 3);
        const auto up = machine.bridge(
            root, 0, 0, {0x10B5, 0x8749, 0x1234, static_cast<std::uint16_t>(0x0100 + switches)}, 8,
            3);
        for (unsigned port = 0; port < kDownstreamPorts; ++port, ++ports) {
            const auto down = machine.bridge(up, port, 0, {0x10B5, 0x8749, 0x1234, 0x0200}, 4, 2);
            for (unsigned function = 0; function < kFunctions + (ports < kSevenths ? 1 : 0);
                 ++function) {
                machine.endpoint(down, 0, function,
                                 {0x1172, static_cast<std::uint16_t>(0xE000 + function), 0x1234,
                                  static_cast<std::uint16_t>(ports)},
                                 4, 2);
            }
        }
    }
    return machine;
}

} // namespace testsupport
