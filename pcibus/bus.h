// The PCI functions of one machine (domain 0) with the tree that its bridges form. Once made, a Bus
// is never changed, so any number of threads may ask it.
#pragma once

#include "pcibus/busError.h"
#include "pcibus/pciFunction.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace pcibus {

// Every pointer and span handed out stays good as long as the Bus does, and is in ascending handle
// order. No look-up scans the list of functions.
class Bus {
public:
    static constexpr std::size_t kBusCount = 256;

    // Says where a function was read, for messages.
    using Place = std::function<std::string(const PciFunction&)>;

    // Which functions the tree is made of. The plug-in and its bridge library see the first; what
    // is below a CardBus bridge is on a root bus of its own there.
    enum class Tree : std::uint8_t { ofBridges, ofCardBusBridgesToo };

    // A bus without functions.
    Bus() { build({}); }

    // Takes the functions in any order. Raises BusError, beginning with `place` of the function at
    // fault, for two functions at one address and for bridges whose secondary buses form a cycle;
    // and std::bad_alloc.
    Bus(std::vector<PciFunction> functions, const Place& place, Tree tree = Tree::ofBridges);

    // Whether a function counts as a bridge in this tree.
    [[nodiscard]] bool isBridge(const PciFunction& function) const {
        return function.isBridge() ||
               (tree_ == Tree::ofCardBusBridgesToo && function.isCardBusBridge());
    }

    // Sorted by bus, device and function.
    [[nodiscard]] std::span<const PciFunction> functions() const { return functions_; }
    [[nodiscard]] std::span<const PciFunction> functionsOn(std::uint8_t bus) const;

    // Null when there is none, also for handles that no function can have.
    [[nodiscard]] const PciFunction* find(std::uint32_t handle) const;
    [[nodiscard]] const PciFunction* findBridge(std::uint32_t handle) const;

    // The bridge whose secondary bus this is, the lowest where several claim it; null without one,
    // as for a root bus. Bus 0 never has one, since secondary bus 0 means not configured.
    [[nodiscard]] const PciFunction* parentOfBus(std::uint8_t bus) const;

    // Handles of bridges: all of them; those on a bus; those directly below a bridge (none when
    // another bridge is the parent of its secondary bus); those with these identifiers.
    [[nodiscard]] std::span<const std::uint32_t> bridges() const { return bridges_; }
    [[nodiscard]] std::span<const std::uint32_t> bridgesOn(std::uint8_t bus) const;
    [[nodiscard]] std::span<const std::uint32_t> childrenOf(const PciFunction& bridge) const;
    [[nodiscard]] std::span<const std::uint32_t> bridgesWithIds(const PciIds& ids) const;

    // The buses that have functions and no parent bridge, ascending.
    [[nodiscard]] std::span<const std::uint8_t> rootBuses() const { return rootBuses_; }

private:
    // Positions in a list that is sorted by bus: those of bus b are [b] to [b + 1].
    using BusIndex = std::array<std::uint32_t, kBusCount + 1>;

    static constexpr std::uint32_t kNone = 0xFFFFFFFF;

    void build(const Place& place);
    void refuseSharedAddresses(const Place& place) const;
    void refuseCycles(const Place& place) const;

    Tree tree_ = Tree::ofBridges;
    std::vector<PciFunction> functions_;
    BusIndex functionsOfBus_{};
    std::vector<std::uint32_t> bridges_; // handles
    BusIndex bridgesOfBus_{};
    std::array<std::uint32_t, kBusCount> parents_{}; // positions in functions_
    std::vector<std::uint64_t> ids_;                 // of bridges, ascending
    std::vector<std::uint32_t> bridgesByIds_;        // handles, in the order of ids_
    std::vector<std::uint8_t> rootBuses_;
};

} // namespace pcibus
