#include "tavctl/mock/recordedMachine.h"

#include "pcibus/readBus.h"
#include "platform/utf8Path.h"
#include "tavctl/bus/busQueries.h"
#include "tavctl/bus/dumpText.h"
#include "tavctl/bus/leftOutWords.h"
#include "tavctl/words/failure.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace tavctl::mock {

namespace {

using pcibus::Bus;
using pcibus::PciFunction;

struct Seen {
    PciFunction function;
    pcibus::Link link;
    std::vector<std::uint8_t> bytes;
};

// Of domain 0, by handle.
using SeenFunctions = std::map<std::uint32_t, Seen>;

std::unique_ptr<Function> functionFrom(Seen& seen, const Bus& bus, const LastBuses& lastBuses) {
    auto function = std::make_unique<Function>();
    function->ids = seen.function.ids();
    function->headerType = seen.function.headerType;
    function->link = seen.link;
    function->hasLink = seen.link.isKnown();
    function->bus = seen.function.bus;
    function->secondary = seen.function.secondaryBus;
    function->subordinate = lastForwardedBus(bus, lastBuses, seen.function);
    function->isRecorded = true;
    function->bytes = std::move(seen.bytes);
    return function;
}

// As deep as buses can be nested.
void addBus(Functions& functions, std::uint8_t number, const Bus& bus, const LastBuses& lastBuses,
            SeenFunctions& seen) {
    for (const PciFunction& each : bus.functionsOn(number)) {
        auto& function = functions[each.hop()];
        function = functionFrom(seen.at(each.handle()), bus, lastBuses);
        if (each.secondaryBus != 0 && bus.parentOfBus(each.secondaryBus) == &each)
            addBus(function->below, each.secondaryBus, bus, lastBuses, seen);
    }
}

} // namespace

RecordedMachine readRecordedMachine(const std::string& location) {
    RecordedMachine recorded;
    SeenFunctions seen;
    pcibus::LeftOut leftOut;
    try {
        recorded.bus = std::make_shared<const Bus>(pcibus::readBus(
            platform::utf8Path(location), &leftOut, [&](const pcibus::SeenFunction& each) {
                const auto kept = each.bytes.first(std::min<std::size_t>(256, each.bytes.size()));
                if (each.domain == 0) {
                    seen[each.function.handle()] = {
                        each.function, each.link, {kept.begin(), kept.end()}};
                } else {
                    appendDumpFunction(
                        recorded.machine.otherDomains.emplace_back(),
                        fmt::format("{:04x}:{}", each.domain, pcibus::addressText(each.function)),
                        each.function, kept);
                }
            }));
    } catch (const pcibus::BusError& error) {
        throw FailureException({"read the bus", location, error.what(), {}, {}});
    }
    leftOut.otherDomains -= recorded.machine.otherDomains.size(); // they stay in it
    tellLeftOut(leftOut);
    std::vector<PciFunction> functions;
    for (const auto& [handle, each] : seen)
        functions.push_back(each.function);
    const auto whole = std::make_unique<const Bus>(std::move(functions), pcibus::addressText,
                                                   Bus::Tree::ofCardBusBridgesToo);
    const LastBuses lastBuses = lastBusesOf(*whole);
    recorded.machine.isRecorded = true;
    for (const std::uint8_t root : whole->rootBuses())
        addBus(recorded.machine.roots[root], root, *whole, lastBuses, seen);
    return recorded;
}

} // namespace tavctl::mock
