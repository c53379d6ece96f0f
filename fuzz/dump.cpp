// Any bytes as a recorded bus. The text is refused with the number of a line that it has, or gives
// a bus that obeys its rules: in order, no two functions at one address, none that does not answer,
// no way down that comes back, every function found again by its handle and by its position. A text
// is an empty bus only where it is blank or every function was passed over, which is told.
//
// A first byte 01 makes the rest a bus in short (see busText.h), which is printed as a dump first:
// the bus must then have just these functions, but for those that do not answer, which are counted.
#include "pcibus/dump.h"

#include "fuzz/busText.h"
#include "fuzz/expect.h"
#include "pcibus/position.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

using fuzz::expect;
using pcibus::Bus;
using pcibus::PciFunction;

constexpr char kInShort = 1;

void expectLineNumber(std::string_view message, std::string_view text) {
    constexpr std::string_view kPlace = "the name:";
    expect(message.starts_with(kPlace), "a message begins with the dump's name");
    const std::string number(message.substr(kPlace.size()));
    char* end = nullptr;
    const unsigned long line = std::strtoul(number.c_str(), &end, 10);
    const auto lines = static_cast<unsigned long>(std::count(text.begin(), text.end(), '\n')) +
                       (text.empty() || text.back() == '\n' ? 0 : 1);
    expect(std::string_view(end).starts_with(": ") && line >= 1 && line <= lines,
           "a message names a line of the dump");
}

void expectOrder(const Bus& bus) {
    std::uint64_t next = 0;
    std::size_t bridges = 0;
    for (const PciFunction& function : bus.functions()) {
        expect(function.handle() >= next, "functions are in order, one at an address");
        next = std::uint64_t{function.handle()} + 1;
        expect(function.vendorId != 0xFFFF, "a function that does not answer is passed over");
        expect(function.device <= 31 && function.function <= 7, "an address is in range");
        expect(bus.find(function.handle()) == &function, "a function is found by its handle");
        expect((bus.findBridge(function.handle()) == &function) == function.isBridge(),
               "a bridge is found by its handle");
        expect(function.isBridge() || (function.linkWidth == 0 && function.linkSpeed == 0),
               "what a bridge has, no other function has");
        expect(function.isBridge() || function.isCardBusBridge() ||
                   (function.secondaryBus == 0 && function.subordinateBus == 0),
               "a function that is no bridge forwards no bus");
        const pcibus::PciIds ids = {function.vendorId, function.deviceId,
                                    function.subsystemVendorId, function.subsystemId};
        const auto alike = bus.bridgesWithIds(ids);
        expect(std::is_sorted(alike.begin(), alike.end()) &&
                   (std::find(alike.begin(), alike.end(), function.handle()) != alike.end()) ==
                       function.isBridge(),
               "bridges are found by their identifiers");
        bridges += function.isBridge() ? 1 : 0;
    }
    expect(bridges == bus.bridges().size(), "each bridge is listed once");
    expect(std::is_sorted(bus.bridges().begin(), bus.bridges().end()), "bridges are in order");
}

// Down from a bus by every configured bridge; `path` is what lies above.
void expectNoCycle(const Bus& bus, std::uint8_t from, std::set<std::uint8_t>& path,
                   std::set<std::uint8_t>& done) {
    expect(path.insert(from).second, "bridges form no cycle");
    if (done.insert(from).second)
        for (const std::uint32_t handle : bus.bridgesOn(from))
            if (const std::uint8_t below = bus.find(handle)->secondaryBus; below != 0)
                expectNoCycle(bus, below, path, done);
    path.erase(from);
}

void expectTree(const Bus& bus) {
    std::set<std::uint8_t> done;
    for (const std::uint32_t bridge : bus.bridges()) {
        std::set<std::uint8_t> path;
        expectNoCycle(bus, static_cast<std::uint8_t>(bridge >> 8), path, done);
    }
    for (const PciFunction& function : bus.functions()) {
        const pcibus::Position position = pcibus::positionOf(bus, function);
        expect(pcibus::functionAt(bus, position.rootBus, position.hops()) == &function,
               "a function is found by its position");
        const auto roots = bus.rootBuses();
        expect(std::binary_search(roots.begin(), roots.end(), position.rootBus),
               "a position begins at a root bus");
        const PciFunction* const parent = bus.parentOfBus(function.bus);
        if (parent != nullptr && function.isBridge()) {
            const auto children = bus.childrenOf(*parent);
            expect(std::binary_search(children.begin(), children.end(), function.handle()),
                   "a bridge is a child of its parent");
        }
    }
}

bool sameFunction(const PciFunction& a, const PciFunction& b) {
    return a.handle() == b.handle() && a.headerType == b.headerType && a.vendorId == b.vendorId &&
           a.deviceId == b.deviceId && a.subsystemVendorId == b.subsystemVendorId &&
           a.subsystemId == b.subsystemId && a.secondaryBus == b.secondaryBus &&
           a.subordinateBus == b.subordinateBus && a.linkWidth == b.linkWidth &&
           a.linkSpeed == b.linkSpeed && a.line == b.line;
}

// Nothing but white space, behind a byte-order mark or without one.
bool isBlank(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    return text.find_first_not_of(" \t\r\n\v\f") == std::string_view::npos;
}

void expectFunctions(const Bus& bus, const pcibus::LeftOut& leftOut,
                     std::vector<PciFunction> expected) {
    const std::size_t dead = std::erase_if(
        expected, [](const PciFunction& function) { return function.vendorId == 0xFFFF; });
    std::sort(expected.begin(), expected.end(),
              [](const auto& a, const auto& b) { return a.handle() < b.handle(); });
    expect(std::equal(expected.begin(), expected.end(), bus.functions().begin(),
                      bus.functions().end(), sameFunction),
           "the bus has the functions of the dump");
    // Only bridges are printed with the bit that says that there are capabilities, and with these.
    expect(leftOut.dead == dead && leftOut.otherDomains == 0 && leftOut.headerOnly == 0,
           "what is passed over is counted");
}

// False when the text is refused.
bool expectBus(std::string_view text, const std::vector<PciFunction>* expected) {
    try {
        pcibus::LeftOut leftOut;
        std::size_t given = 0;
        std::size_t others = 0;
        std::size_t headersOnly = 0;
        const Bus bus = pcibus::parseDump(
            text, "the name",
            [&](const pcibus::SeenFunction& seen) {
                expect(seen.bytes.size() >= 64 && seen.bytes.size() <= 4096,
                       "a function has its bytes");
                others += seen.domain != 0 ? 1 : 0;
                if (seen.domain != 0)
                    return;
                ++given;
                headersOnly += seen.bytes.size() == 64 && (seen.bytes[6] & 0x10) != 0 ? 1 : 0;
                expect(!seen.function.isBridge() ||
                           (seen.link().maximumWidth == seen.function.linkWidth &&
                            seen.link().maximumSpeed == seen.function.linkSpeed),
                       "a bridge's link is the one that it is told of");
            },
            &leftOut);
        expect(given == bus.functions().size(), "each function's bytes are given");
        expect(others <= leftOut.otherDomains, "functions of other domains are counted");
        expectOrder(bus);
        expectTree(bus);
        expect(leftOut.headerOnly == headersOnly, "headers without their capabilities are counted");
        expect(leftOut.unreadable == 0, "the functions of a dump have their bytes");
        expect(isBlank(text) || given + leftOut.dead + leftOut.otherDomains != 0,
               "a text without functions is refused");
        if (expected != nullptr)
            expectFunctions(bus, leftOut, *expected);
        return true;
    } catch (const pcibus::BusError& error) {
        expect(!isBlank(text), "a blank text is an empty bus");
        expectLineNumber(error.what(), text);
        return false;
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    if (!input.starts_with(kInShort)) {
        expectBus(input, nullptr);
        return 0;
    }
    const auto functions = fuzz::readBusText(input.substr(1));
    expectBus(fuzz::dumpOf(functions), &functions);
    return 0;
}
