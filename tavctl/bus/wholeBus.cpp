#include "tavctl/bus/wholeBus.h"

#include "pcibus/readBus.h"
#include "tavctl/bus/busFailure.h"

#include <algorithm>
#include <map>
#include <utility>

namespace tavctl {

namespace {

using pcibus::Bus;
using pcibus::PciFunction;

std::unique_ptr<const Bus> makeBus(const std::vector<DomainBus::Entry>& entries) {
    std::vector<PciFunction> functions;
    functions.reserve(entries.size());
    for (const DomainBus::Entry& entry : entries)
        functions.push_back(entry.function);
    const auto make = [](std::vector<PciFunction> taken) {
        return std::make_unique<const Bus>(std::move(taken), pcibus::addressText,
                                           Bus::Tree::ofCardBusBridgesToo);
    };
    try {
        return make(functions);
    } catch (const pcibus::BusError&) {
        for (PciFunction& function : functions)
            function.secondaryBus = 0;
        return make(std::move(functions));
    }
}

using Domains = std::map<std::uint32_t, std::vector<DomainBus::Entry>>;

WholeBus wholeOf(Domains domains, Bus&& searched) {
    WholeBus whole;
    whole.searched = std::make_shared<const Bus>(std::move(searched));
    domains.try_emplace(0);
    for (auto& [number, entries] : domains)
        whole.domains.emplace_back(number, std::move(entries));
    return whole;
}

} // namespace

DomainBus::DomainBus() : DomainBus(0, {}) {}

DomainBus::DomainBus(std::uint32_t number, std::vector<Entry> entries) : number_(number) {
    const auto handleOf = [](const Entry& entry) { return entry.function.handle(); };
    std::stable_sort(entries.begin(), entries.end(),
                     [&](const Entry& a, const Entry& b) { return handleOf(a) < handleOf(b); });
    entries.erase(
        std::unique(entries.begin(), entries.end(),
                    [&](const Entry& a, const Entry& b) { return handleOf(a) == handleOf(b); }),
        entries.end());
    links_.reserve(entries.size());
    for (Entry& entry : entries)
        links_.push_back({std::move(entry.link), {}});
    bus_ = makeBus(entries);
}

const pcibus::Link& DomainBus::linkOf(const PciFunction& function) const {
    LinkOfFunction& known =
        links_.at(static_cast<std::size_t>(&function - bus_->functions().data()));
    if (known.ask)
        known.link = std::exchange(known.ask, nullptr)();
    return known.link;
}

WholeBus readWholeBus(const std::string& location) {
    Domains domains;
    pcibus::LeftOut leftOut;
    try {
        Bus searched = pcibus::readBus(location, &leftOut, [&](const pcibus::SeenFunction& seen) {
            domains[seen.domain].push_back({seen.function, seen.link});
        });
        WholeBus whole = wholeOf(std::move(domains), std::move(searched));
        whole.leftOut = leftOut;
        return whole;
    } catch (const pcibus::BusError& error) {
        throw FailureException(busFailure(location, error.what()));
    }
}

WholeBus wholeBusOf(Bus&& bus) {
    Domains domains;
    for (const PciFunction& function : bus.functions()) {
        pcibus::Link link;
        link.maximumWidth = function.linkWidth;
        link.maximumSpeed = function.linkSpeed;
        domains[0].push_back({function, [link] { return link; }});
    }
    return wholeOf(std::move(domains), std::move(bus));
}

} // namespace tavctl
