#include "tavctl/record/busRecording.h"

#include "pcibus/configSpace.h"
#include "pcibus/dump.h"
#include "pcibus/sysfs.h"
#include "platform/file.h"
#include "platform/utf8Path.h"
#include "tavctl/bus/busQueries.h"
#include "tavctl/record/madeCapabilities.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <system_error>

namespace tavctl {

namespace {

namespace fs = std::filesystem;
using pcibus::PciFunction;

constexpr std::size_t kStandardSize = 256; // what lspci -xxx prints

bool isSame(const PciFunction& a, const PciFunction& b) {
    return a.headerType == b.headerType && a.ids() == b.ids() && a.secondaryBus == b.secondaryBus &&
           a.linkWidth == b.linkWidth && a.linkSpeed == b.linkSpeed;
}

// What is read back from the bytes is what the bus says of the function.
void complete(RecordedFunction& recorded) {
    PciFunction readBack;
    pcibus::decodeConfigSpace(recorded.bytes, readBack);
    if (isSame(readBack, recorded.function))
        return;
    if (recorded.bytes.size() > pcibus::kHeaderSize)
        recorded.note = "its capabilities do not say what the system says of it; they are left out";
    if (recorded.function.isBridge()) {
        const auto [from, to] = makeCapabilities(recorded.function, recorded.bytes);
        recorded.madeFrom = from;
        recorded.madeTo = to;
    } else {
        recorded.bytes.resize(pcibus::kHeaderSize);
    }
}

std::vector<std::uint8_t> readBytes(const fs::path& file) {
    std::vector<std::uint8_t> bytes(kStandardSize);
    const platform::Stream stream = platform::openStream(platform::utf8Text(file).c_str(), "rb");
    bytes.resize(stream ? std::fread(bytes.data(), 1, bytes.size(), stream.get()) : 0);
    return bytes;
}

void add(const PciFunction& function, std::vector<std::uint8_t> bytes, BusRecording& recording) {
    if (bytes.size() < pcibus::kHeaderSize || pcibus::isDead(bytes))
        return; // unplugged meanwhile
    RecordedFunction recorded;
    recorded.function = function;
    recorded.bytes = std::move(bytes);
    if (recorded.bytes.size() == pcibus::kHeaderSize)
        ++recording.headersOnly;
    complete(recorded);
    recording.functions.push_back(std::move(recorded));
}

BusRecording recordSysfs(const fs::path& root) {
    const fs::path devices = root / "bus" / "pci" / "devices";
    BusRecording recording;
    pcibus::LeftOut leftOut;
    const pcibus::Bus bus = pcibus::readSysfs(root, &leftOut);
    for (const PciFunction& function : bus.functions())
        add(function, readBytes(devices / ("0000:" + pcibus::addressText(function)) / "config"),
            recording);
    recording.otherDomains = leftOut.otherDomains;
    return recording;
}

BusRecording recordDump(const fs::path& file) {
    BusRecording recording;
    pcibus::LeftOut leftOut;
    pcibus::readDump(
        file,
        [&](const PciFunction& function, std::span<const std::uint8_t> bytes) {
            const std::span kept = bytes.first(std::min(bytes.size(), kStandardSize));
            add(function, {kept.begin(), kept.end()}, recording);
        },
        &leftOut);
    recording.otherDomains = leftOut.otherDomains;
    std::sort(recording.functions.begin(), recording.functions.end(),
              [](const RecordedFunction& a, const RecordedFunction& b) {
                  return a.function.handle() < b.function.handle();
              });
    return recording;
}

// The highest bus below a bridge, for readers that go by it.
std::uint8_t lastBusBelow(const pcibus::Bus& bus, const LastBuses& lastBuses,
                          const PciFunction& bridge) {
    return bus.parentOfBus(bridge.secondaryBus) == &bridge ? lastBuses[bridge.secondaryBus]
                                                           : bridge.secondaryBus;
}

void put16(std::vector<std::uint8_t>& bytes, std::size_t at, std::uint16_t value) {
    bytes[at] = static_cast<std::uint8_t>(value & 0xFFU);
    bytes[at + 1] = static_cast<std::uint8_t>(value >> 8U);
}

std::vector<std::uint8_t> scrubbedHeader(const pcibus::Bus& bus, const LastBuses& lastBuses,
                                         const PciFunction& function) {
    std::vector<std::uint8_t> bytes(pcibus::kHeaderSize, 0);
    put16(bytes, 0x00, function.vendorId);
    put16(bytes, 0x02, function.deviceId);
    bytes[0x0E] = function.headerType;
    if (function.headerType == 0) {
        put16(bytes, 0x2C, function.subsystemVendorId);
        put16(bytes, 0x2E, function.subsystemId);
    }
    if (function.isBridge()) {
        put16(bytes, 0x0A, 0x0604); // the class: a bridge between PCI buses
        bytes[0x18] = function.bus;
        bytes[0x19] = function.secondaryBus;
        bytes[0x1A] = lastBusBelow(bus, lastBuses, function);
    }
    return bytes;
}

using TextEnd = std::back_insert_iterator<std::string>;

void appendFunction(const RecordedFunction& recorded, TextEnd out) {
    const auto& bytes = recorded.bytes;
    const std::string address = pcibus::addressText(recorded.function);
    if (recorded.madeTo != 0)
        fmt::format_to(out,
                       "# {}: bytes {:02x} to {:02x} are made from what the system says of its "
                       "subsystem and link\n",
                       address, recorded.madeFrom, recorded.madeTo - 1);
    if (!recorded.note.empty())
        fmt::format_to(out, "# {}: {}\n", address, recorded.note);
    fmt::format_to(out, "{} {:02x}{:02x}: {:04x}:{:04x}", address, bytes[0x0B], bytes[0x0A],
                   recorded.function.vendorId, recorded.function.deviceId);
    if (const std::uint8_t revision = bytes[0x08]; revision != 0)
        fmt::format_to(out, " (rev {:02x})", revision);
    constexpr std::size_t kRow = 16;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i % kRow == 0)
            fmt::format_to(out, "\n{:02x}:", i);
        fmt::format_to(out, " {:02x}", bytes[i]);
    }
    fmt::format_to(out, "\n\n");
}

} // namespace

BusRecording recordBus(const fs::path& location) {
    std::error_code ignored;
    return fs::is_directory(location, ignored) ? recordSysfs(location) : recordDump(location);
}

BusRecording scrubbedRecording(const pcibus::Bus& bus) {
    BusRecording recording;
    recording.scrubbed = true;
    const LastBuses lastBuses = lastBusesOf(bus);
    for (const PciFunction& function : bus.functions()) {
        RecordedFunction recorded;
        recorded.function = function;
        recorded.bytes = scrubbedHeader(bus, lastBuses, function);
        if (function.isBridge())
            makeCapabilities(function, recorded.bytes);
        recording.functions.push_back(std::move(recorded));
    }
    return recording;
}

std::string recordingText(const BusRecording& recording, const std::string& program) {
    std::string text = fmt::format("# Recorded by {} in the form of lspci -xxx: {} functions.\n",
                                   program, recording.functions.size());
    const TextEnd out(text);
    const auto made = static_cast<std::size_t>(
        std::count_if(recording.functions.begin(), recording.functions.end(),
                      [](const RecordedFunction& recorded) { return recorded.madeTo != 0; }));
    if (recording.scrubbed)
        text += "# Scrubbed: only what matters to matching is as on the bus.\n";
    if (recording.headersOnly != 0)
        fmt::format_to(out,
                       "# Of {} functions only the first 64 bytes could be read; run as root for "
                       "more.\n",
                       recording.headersOnly);
    if (made != 0)
        fmt::format_to(out,
                       "# The capabilities of {} bridges are made for this recording, as told "
                       "there.\n",
                       made);
    if (recording.otherDomains != 0)
        fmt::format_to(out, "# {} functions of domains other than 0 are left out.\n",
                       recording.otherDomains);
    text += '\n';
    for (const RecordedFunction& recorded : recording.functions)
        appendFunction(recorded, out);
    return text;
}

} // namespace tavctl
