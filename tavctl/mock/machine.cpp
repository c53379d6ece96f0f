#include "tavctl/mock/machine.h"

#include "tavctl/mock/plan.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>

namespace tavctl::mock {

namespace {

constexpr unsigned kLastBus = 255;

// Numbers buses from `last` on up to `end`, and says which one was the last.
class Numbering {
public:
    explicit Numbering(unsigned end) : end_(end) {}

    [[nodiscard]] unsigned number(Functions& functions, unsigned bus, unsigned last) {
        for (auto& [hop, function] : functions) {
            function->bus = static_cast<std::uint8_t>(bus);
            if (!function->hasBusNumbers() || (function->isRecorded && function->secondary == 0))
                continue;
            last = numberBridge(*function, last + 1);
        }
        return last;
    }

    unsigned numberBridge(Function& bridge, unsigned next) {
        const unsigned secondary = std::max<unsigned>(next, bridge.wishedBus);
        if (bridge.wishedBus != 0 && secondary != bridge.wishedBus)
            refuse(bridge.wishPlace,
                   fmt::format("bus {:02x} is in use before; {:02x} is the first one that is free",
                               bridge.wishedBus, next));
        const unsigned used = number(bridge.below, secondary, secondary);
        const unsigned last = used + bridge.reserve;
        if (last > end_)
            refuse(
                bridge.wishPlace.empty() ? fmt::format("bus {:02x}", secondary) : bridge.wishPlace,
                fmt::format("the bus numbers do not last: {:02x} is the last one there is", end_));
        bridge.secondary = static_cast<std::uint8_t>(secondary);
        bridge.subordinate = static_cast<std::uint8_t>(last);
        return last;
    }

private:
    unsigned end_;
};

// The last bus number in use below, `bus` without one.
unsigned lastUsed(const Functions& functions, unsigned bus) {
    unsigned last = bus;
    for (const auto& [hop, function] : functions) {
        if (!function->isRecorded || function->secondary == 0)
            continue;
        last = std::max<unsigned>(
            {last, function->subordinate, lastUsed(function->below, function->secondary)});
    }
    return last;
}

// Numbers what is new on a bus, and below it, with what is free behind the numbers in use. False
// when that does not suffice.
bool numberAmongRecorded(Functions& functions, unsigned bus, unsigned end) {
    unsigned last = lastUsed(functions, bus);
    for (auto& [hop, function] : functions) {
        function->bus = static_cast<std::uint8_t>(bus);
        if (function->isRecorded) {
            if (function->secondary != 0 &&
                !numberAmongRecorded(function->below, function->secondary, function->subordinate))
                return false;
            continue;
        }
        if (!function->hasBusNumbers())
            continue;
        try {
            last = Numbering(end).numberBridge(*function, last + 1);
        } catch (const FailureException&) {
            return false;
        }
    }
    return true;
}

// A bridge that a recorded machine has not configured gets its numbers when something is below it.
void configureBridges(Functions& functions) {
    for (auto& [hop, function] : functions) {
        configureBridges(function->below);
        if (function->isRecorded && function->secondary == 0 && !function->below.empty())
            function->isRecorded = false;
    }
}

} // namespace

Function* Machine::at(std::uint8_t root, const std::vector<std::uint8_t>& way) const {
    const auto bus = roots.find(root);
    const Functions* functions = bus == roots.end() ? nullptr : &bus->second;
    Function* found = nullptr;
    for (const std::uint8_t hop : way) {
        const auto next = functions == nullptr ? Functions::const_iterator() : functions->find(hop);
        if (functions == nullptr || next == functions->end())
            return nullptr;
        found = next->second.get();
        functions = &found->below;
    }
    return found;
}

bool numberBuses(Machine& machine) {
    bool changed = false;
    for (auto root = machine.roots.begin(); root != machine.roots.end(); ++root) {
        const auto next = std::next(root);
        const unsigned end = next == machine.roots.end() ? kLastBus : next->first - 1U;
        Functions& functions = root->second;
        configureBridges(functions);
        if (machine.isRecorded) {
            if (numberAmongRecorded(functions, root->first, end))
                continue;
            changed = true;
        }
        (void)Numbering(end).number(functions, root->first, root->first);
    }
    return changed;
}

} // namespace tavctl::mock
