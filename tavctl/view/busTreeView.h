// One domain of the bus as a tree of functions with the devices marked in it, and what part of it
// is shown. The text and JSON forms of the tree are made from this.
#pragma once

#include "tavctl/bus/busQueries.h"
#include "tavctl/bus/linkState.h"
#include "tavctl/bus/wholeBus.h"
#include "tavctl/match/placedDevices.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace tavctl {

// What a function is to a device.
struct TreeMark {
    enum class Role : std::uint8_t { device, upstreamPort, anchor, port };
    Role role = Role::device;
    std::size_t device = 0; // position in the list of devices
    std::size_t port = 0;   // with Role::port: position in the device's ports
};

// How programs are told of a role: by its name here.
const char* roleName(TreeMark::Role role);

// A described port that is not there, in the place where it should be.
struct MissingPort {
    std::size_t device = 0;
    std::size_t port = 0;
    std::uint8_t hop = 0;
};

class BusTreeView {
public:
    // Shows everything. Both arguments must outlive the view. There are no devices in a domain
    // other than 0.
    BusTreeView(const DomainBus& domain, const std::vector<PlacedDevice>& devices);

    // Shows only these functions, what lies below them, and the way from the root to them; nothing
    // for none. May be called once.
    void showOnly(const std::vector<std::uint32_t>& handles);

    [[nodiscard]] const DomainBus& domain() const { return domain_; }
    [[nodiscard]] const pcibus::Bus& bus() const { return domain_.bus(); }
    [[nodiscard]] const std::vector<PlacedDevice>& devices() const { return devices_; }

    [[nodiscard]] const std::vector<TreeMark>& marksOf(std::uint32_t handle) const;
    [[nodiscard]] const std::vector<MissingPort>& missingBelow(std::uint32_t handle) const;
    [[nodiscard]] bool isShown(std::uint32_t handle) const { return shown_[handle]; }

    // The functions on the bus below a bridge, shown or not; none below any other function.
    [[nodiscard]] std::span<const pcibus::PciFunction>
    below(const pcibus::PciFunction& function) const;

    // Whether a function is a bridge that has a bus of its own below it.
    [[nodiscard]] bool leadsToBus(const pcibus::PciFunction& function) const;

    // The last bus that such a bridge forwards (see busQueries.h).
    [[nodiscard]] std::uint8_t lastBusOf(const pcibus::PciFunction& bridge) const;

private:
    void showBelow(std::uint32_t handle);

    static constexpr std::size_t kHandleCount = 0x10000;

    const DomainBus& domain_;
    const std::vector<PlacedDevice>& devices_;
    std::unordered_map<std::uint32_t, std::vector<TreeMark>> marks_;
    std::unordered_map<std::uint32_t, std::vector<MissingPort>> missing_;
    std::vector<bool> shown_; // by handle
    LastBuses lastBuses_;
};

} // namespace tavctl
