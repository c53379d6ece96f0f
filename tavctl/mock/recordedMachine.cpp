#include "tavctl/mock/recordedMachine.h"

#include "pcibus/readBus.h"
#include "tavctl/bus/busFailure.h"
#include "tavctl/bus/busQueries.h"
#include "tavctl/bus/dumpText.h"
#include "tavctl/bus/leftOutWords.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace tavctl::mock {

namespace {

using pcibus::Bus;
using pcibus::PciFunction;

std::unique_ptr<Function> functionFrom(const RecordedFunction& recorded, const Bus& bus,
                                       const LastBuses& lastBuses) {
    auto function = std::make_unique<Function>();
    function->ids = recorded.function.ids();
    function->headerType = recorded.function.headerType;
    function->link = recorded.link;
    function->hasLink = recorded.link.isKnown();
    function->bus = recorded.function.bus;
    function->secondary = recorded.function.secondaryBus;
    function->subordinate = lastForwardedBus(bus, lastBuses, recorded.function);
    function->isRecorded = true;
    function->bytes = recorded.bytes;
    return function;
}

// As deep as buses can be nested.
void addBus(Functions& functions, std::uint8_t number, const Bus& bus, const LastBuses& lastBuses,
            const RecordedMachine& recorded) {
    for (const PciFunction& each : bus.functionsOn(number)) {
        auto& function = functions[each.hop()];
        function = functionFrom(recorded.functions.at(each.handle()), bus, lastBuses);
        if (each.secondaryBus != 0 && bus.parentOfBus(each.secondaryBus) == &each)
            addBus(function->below, each.secondaryBus, bus, lastBuses, recorded);
    }
}

} // namespace

RecordedMachine readRecordedMachine(const std::string& location) {
    RecordedMachine recorded;
    pcibus::LeftOut leftOut;
    try {
        recorded.bus = std::make_shared<const Bus>(
            pcibus::readBus(location, &leftOut, [&](const pcibus::SeenFunction& each) {
                const auto kept = each.bytes.first(std::min<std::size_t>(256, each.bytes.size()));
                if (each.domain == 0) {
                    recorded.functions[each.function.handle()] = {
                        each.function, each.link(), {kept.begin(), kept.end()}};
                } else {
                    appendDumpFunction(
                        recorded.otherDomains.emplace_back(),
                        fmt::format("{:04x}:{}", each.domain, pcibus::addressText(each.function)),
                        each.function, kept);
                }
            }));
    } catch (const pcibus::BusError& error) {
        throw FailureException(busFailure(location, error.what()));
    }
    leftOut.otherDomains -= recorded.otherDomains.size(); // they stay in it
    tellLeftOut(leftOut);
    return recorded;
}

Machine machineOf(const RecordedMachine& recorded) {
    std::vector<PciFunction> functions;
    for (const auto& [handle, each] : recorded.functions)
        functions.push_back(each.function);
    const auto whole = std::make_unique<const Bus>(std::move(functions), pcibus::addressText,
                                                   Bus::Tree::ofCardBusBridgesToo);
    const LastBuses lastBuses = lastBusesOf(*whole);
    Machine machine;
    machine.isRecorded = true;
    machine.otherDomains = recorded.otherDomains;
    for (const std::uint8_t root : whole->rootBuses())
        addBus(machine.roots[root], root, *whole, lastBuses, recorded);
    return machine;
}

} // namespace tavctl::mock
