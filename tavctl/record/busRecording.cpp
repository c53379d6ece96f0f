#include "tavctl/record/busRecording.h"

#include "pcibus/configSpace.h"
#include "pcibus/readBus.h"
#include "platform/utf8Path.h"
#include "tavctl/bus/busQueries.h"
#include "tavctl/bus/dumpText.h"
#include "tavctl/bus/leftOutWords.h"
#include "tavctl/record/madeCapabilities.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <span>
#include <utility>

namespace tavctl {

namespace {

namespace fs = std::filesystem;
using pcibus::PciFunction;

bool isSame(const PciFunction& a, const PciFunction& b) {
    return a.headerType == b.headerType && a.ids() == b.ids() && a.secondaryBus == b.secondaryBus &&
           a.linkWidth == b.linkWidth && a.linkSpeed == b.linkSpeed;
}

// The link with the maximum that matching goes by.
pcibus::Link linkOf(const RecordedFunction& recorded) {
    pcibus::Link link = recorded.link;
    if (recorded.function.isBridge()) {
        link.maximumWidth = recorded.function.linkWidth;
        link.maximumSpeed = recorded.function.linkSpeed;
    }
    return link;
}

// What is read back from the bytes is what the bus says of the function.
void complete(RecordedFunction& recorded) {
    PciFunction readBack;
    pcibus::decodeConfigSpace(recorded.bytes, readBack);
    const bool isHeader = recorded.bytes.size() == pcibus::kHeaderSize;
    const bool lacksLink = isHeader && recorded.link.isKnown();
    if (isSame(readBack, recorded.function) && !lacksLink)
        return;
    if (!isHeader)
        recorded.note = "its capabilities do not say what the system says of it; they are left out";
    if (recorded.function.isBridge() || lacksLink) {
        const auto [from, to] =
            makeCapabilities(recorded.function, linkOf(recorded), recorded.bytes);
        recorded.madeFrom = from;
        recorded.madeTo = to;
    } else {
        recorded.bytes.resize(pcibus::kHeaderSize);
    }
}

void add(const pcibus::SeenFunction& seen, BusRecording& recording) {
    const std::span kept = seen.bytes.first(std::min(seen.bytes.size(), pcibus::kStandardSize));
    RecordedFunction recorded;
    recorded.domain = seen.domain;
    recorded.function = seen.function;
    recorded.link = seen.link();
    recorded.bytes.assign(kept.begin(), kept.end());
    if (recorded.bytes.size() == pcibus::kHeaderSize)
        ++recording.headersOnly;
    complete(recorded);
    recording.functions.push_back(std::move(recorded));
}

std::pair<std::uint32_t, std::uint32_t> placeOf(const RecordedFunction& recorded) {
    return {recorded.domain, recorded.function.handle()};
}

void put16(std::vector<std::uint8_t>& bytes, std::size_t at, std::uint16_t value) {
    bytes[at] = static_cast<std::uint8_t>(value & 0xFFU);
    bytes[at + 1] = static_cast<std::uint8_t>(value >> 8U);
}

// The functions of one domain, which follow each other, as a bus.
pcibus::Bus busOf(std::span<const RecordedFunction> functions) {
    std::vector<PciFunction> listed;
    for (const RecordedFunction& recorded : functions)
        listed.push_back(recorded.function);
    try {
        return {std::move(listed), pcibus::addressText, pcibus::Bus::Tree::ofCardBusBridgesToo};
    } catch (const pcibus::BusError&) {
        return {}; // of another domain: whoever reads a bus lets it be what it is
    }
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
    if (function.isBridge() || function.isCardBusBridge()) {
        // The class: a bridge between PCI buses, or to a CardBus.
        put16(bytes, 0x0A, function.isBridge() ? 0x0604 : 0x0607);
        bytes[0x18] = function.bus;
        bytes[0x19] = function.secondaryBus;
        bytes[0x1A] = lastForwardedBus(bus, lastBuses, function);
    }
    return bytes;
}

std::string missingText(pcibus::LeftOut leftOut) {
    leftOut.headerOnly = 0; // these are not missing
    return leftOutText(leftOut);
}

void appendFunction(const RecordedFunction& recorded, bool withDomain, std::string& text) {
    const auto out = std::back_inserter(text);
    const std::string address =
        (withDomain ? fmt::format("{:04x}:", recorded.domain) : std::string()) +
        pcibus::addressText(recorded.function);
    if (recorded.madeTo != 0)
        fmt::format_to(out,
                       "# {}: bytes {:02x} to {:02x} are made from what the system says of its "
                       "subsystem and link\n",
                       address, recorded.madeFrom, recorded.madeTo - 1);
    if (!recorded.note.empty())
        fmt::format_to(out, "# {}: {}\n", address, recorded.note);
    appendDumpFunction(text, address, recorded.function, recorded.bytes);
}

} // namespace

std::size_t BusRecording::ofOtherDomains() const {
    return static_cast<std::size_t>(
        std::count_if(functions.begin(), functions.end(),
                      [](const RecordedFunction& recorded) { return recorded.domain != 0; }));
}

BusRecording recordBus(const fs::path& location) {
    BusRecording recording;
    pcibus::readBus(platform::utf8Text(location), &recording.leftOut,
                    [&](const pcibus::SeenFunction& seen) { add(seen, recording); });
    auto& functions = recording.functions;
    std::sort(functions.begin(), functions.end(),
              [](const auto& a, const auto& b) { return placeOf(a) < placeOf(b); });
    // A folder of another system may have an address in two ways of writing.
    functions.erase(
        std::unique(functions.begin(), functions.end(),
                    [](const auto& a, const auto& b) { return placeOf(a) == placeOf(b); }),
        functions.end());
    recording.leftOut.otherDomains -= recording.ofOtherDomains();
    return recording;
}

BusRecording scrubbedRecording(const BusRecording& recording) {
    BusRecording result;
    result.scrubbed = true;
    result.leftOut = recording.leftOut;
    const auto& functions = recording.functions;
    for (auto begin = functions.begin(); begin != functions.end();) {
        const auto end = std::find_if(begin, functions.end(), [&](const auto& recorded) {
            return recorded.domain != begin->domain;
        });
        const auto bus = std::make_unique<const pcibus::Bus>(busOf({begin, end}));
        const LastBuses lastBuses = lastBusesOf(*bus);
        for (; begin != end; ++begin) {
            RecordedFunction recorded;
            recorded.domain = begin->domain;
            recorded.function = begin->function;
            recorded.bytes = scrubbedHeader(*bus, lastBuses, begin->function);
            makeCapabilities(begin->function, linkOf(*begin), recorded.bytes);
            result.functions.push_back(std::move(recorded));
        }
    }
    return result;
}

std::string recordingText(const BusRecording& recording, const std::string& program) {
    std::string text = fmt::format("# Recorded by {} in the form of lspci -xxx: {} functions.\n",
                                   program, recording.functions.size());
    const auto out = std::back_inserter(text);
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
                       "# The capabilities of {} functions are made for this recording, as told "
                       "there.\n",
                       made);
    const std::size_t others = recording.ofOtherDomains();
    if (others != 0)
        fmt::format_to(out, "# {} of them are of domains other than 0.\n", others);
    if (const std::string missing = missingText(recording.leftOut); !missing.empty())
        fmt::format_to(out, "# {}\n", missing);
    text += '\n';
    for (const RecordedFunction& recorded : recording.functions)
        appendFunction(recorded, others != 0, text);
    return text;
}

} // namespace tavctl
