#include "pcibus/bus.h"

#include <algorithm>
#include <utility>

namespace pcibus {
namespace {

constexpr std::uint32_t kMaxHandle = 0xFFFF;

// Of two functions at one address the one that is named later comes later, to be the one at fault.
bool comesBefore(const PciFunction& a, const PciFunction& b) {
    return a.handle() != b.handle() ? a.handle() < b.handle() : a.line < b.line;
}

} // namespace

Bus::Bus(std::vector<PciFunction> functions, const Place& place, Tree tree)
    : tree_(tree), functions_(std::move(functions)) {
    build(place);
}

void Bus::build(const Place& place) {
    parents_.fill(kNone);
    // They mostly are: a dump tells them in order.
    if (!std::is_sorted(functions_.begin(), functions_.end(), comesBefore))
        std::sort(functions_.begin(), functions_.end(), comesBefore);
    refuseSharedAddresses(place);

    std::vector<std::pair<std::uint64_t, std::uint32_t>> byIds;
    for (std::uint32_t position = 0; position < functions_.size(); ++position) {
        const PciFunction& function = functions_[position];
        functionsOfBus_[function.bus + std::size_t{1}] = position + 1;
        if (!isBridge(function))
            continue;
        bridges_.push_back(function.handle());
        bridgesOfBus_[function.bus + std::size_t{1}] = static_cast<std::uint32_t>(bridges_.size());
        byIds.emplace_back(function.ids().packed(), function.handle());
        std::uint32_t& parent = parents_[function.secondaryBus];
        if (function.secondaryBus != 0 && parent == kNone)
            parent = position;
    }
    for (std::size_t bus = 1; bus <= kBusCount; ++bus) {
        functionsOfBus_[bus] = std::max(functionsOfBus_[bus], functionsOfBus_[bus - 1]);
        bridgesOfBus_[bus] = std::max(bridgesOfBus_[bus], bridgesOfBus_[bus - 1]);
    }
    refuseCycles(place);

    std::sort(byIds.begin(), byIds.end());
    ids_.reserve(byIds.size());
    bridgesByIds_.reserve(byIds.size());
    for (const auto& [ids, handle] : byIds) {
        ids_.push_back(ids);
        bridgesByIds_.push_back(handle);
    }
    for (std::size_t bus = 0; bus < kBusCount; ++bus) {
        if (functionsOfBus_[bus] != functionsOfBus_[bus + 1] && parents_[bus] == kNone)
            rootBuses_.push_back(static_cast<std::uint8_t>(bus));
    }
}

void Bus::refuseSharedAddresses(const Place& place) const {
    const auto same = [](const PciFunction& a, const PciFunction& b) {
        return a.handle() == b.handle();
    };
    const auto found = std::adjacent_find(functions_.begin(), functions_.end(), same);
    if (found != functions_.end())
        throw BusError(place(found[1]) + ": a second function at " + addressText(found[1]));
}

// Looks at every configured bridge, also one that is not the parent of its secondary bus: whoever
// walks down by secondary buses must come to an end.
void Bus::refuseCycles(const Place& place) const {
    enum class Mark : std::uint8_t { unseen, onPath, done };
    std::array<Mark, kBusCount> marks{};
    struct Step {
        std::uint8_t bus;
        std::size_t next; // bridge of the bus to go down next
    };
    std::vector<Step> path;
    for (const std::uint32_t start : bridges_) {
        const auto startBus = static_cast<std::uint8_t>(start >> 8);
        if (marks[startBus] != Mark::unseen)
            continue;
        marks[startBus] = Mark::onPath;
        path.push_back({startBus, 0});
        while (!path.empty()) {
            Step& step = path.back();
            const auto below = bridgesOn(step.bus);
            if (step.next == below.size()) {
                marks[step.bus] = Mark::done;
                path.pop_back();
                continue;
            }
            const PciFunction& bridge = *find(below[step.next++]);
            const std::uint8_t secondary = bridge.secondaryBus;
            if (secondary == 0)
                continue;
            if (marks[secondary] == Mark::onPath)
                throw BusError(place(bridge) + ": bridges form a cycle through " +
                               addressText(bridge));
            if (marks[secondary] == Mark::unseen) {
                marks[secondary] = Mark::onPath;
                path.push_back({secondary, 0});
            }
        }
    }
}

std::span<const PciFunction> Bus::functionsOn(std::uint8_t bus) const {
    const std::size_t first = functionsOfBus_[bus];
    return functions().subspan(first, functionsOfBus_[bus + std::size_t{1}] - first);
}

const PciFunction* Bus::find(std::uint32_t handle) const {
    if (handle > kMaxHandle)
        return nullptr;
    const auto candidates = functionsOn(static_cast<std::uint8_t>(handle >> 8));
    const auto found = std::lower_bound(candidates.begin(), candidates.end(), handle,
                                        [](const PciFunction& function, std::uint32_t wanted) {
                                            return function.handle() < wanted;
                                        });
    return found != candidates.end() && found->handle() == handle ? &*found : nullptr;
}

const PciFunction* Bus::findBridge(std::uint32_t handle) const {
    const PciFunction* const found = find(handle);
    return found != nullptr && isBridge(*found) ? found : nullptr;
}

const PciFunction* Bus::parentOfBus(std::uint8_t bus) const {
    return parents_[bus] == kNone ? nullptr : &functions_[parents_[bus]];
}

std::span<const std::uint32_t> Bus::bridgesOn(std::uint8_t bus) const {
    const std::size_t first = bridgesOfBus_[bus];
    return bridges().subspan(first, bridgesOfBus_[bus + std::size_t{1}] - first);
}

std::span<const std::uint32_t> Bus::childrenOf(const PciFunction& bridge) const {
    const PciFunction* const parent = parentOfBus(bridge.secondaryBus);
    if (parent == nullptr || parent->handle() != bridge.handle())
        return {};
    return bridgesOn(bridge.secondaryBus);
}

std::span<const std::uint32_t> Bus::bridgesWithIds(const PciIds& ids) const {
    const auto [first, last] = std::equal_range(ids_.begin(), ids_.end(), ids.packed());
    return std::span(bridgesByIds_)
        .subspan(static_cast<std::size_t>(first - ids_.begin()),
                 static_cast<std::size_t>(last - first));
}

} // namespace pcibus
