// Builds PCI buses for tests and benchmarks: bridges and endpoints are put where they are wanted,
// bus numbers follow from that, and the whole is written as a dump or as a sysfs tree.
//
//     BusBuilder machine;
//     const auto port = machine.rootPort(0, 0x1C, 0, {0x8086, 0xA110}, 4);
//     const auto up = machine.bridge(port, 0, 0, {0x10B5, 0x8609, 0x1234, 0x0001}, 4);
//     machine.endpoint(up, 2, 0, {0x1172, 0xE001, 0x1234, 0x0002});
//     pcibus::parseDump(machine.dump(), "machine");
#pragma once

#include "pcibus/pciFunction.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace testsupport {

struct Ids {
    std::uint16_t vendor = 0;
    std::uint16_t device = 0;
    std::uint16_t subsystemVendor = 0; // of a bridge: 0 and 0 leaves the capability out
    std::uint16_t subsystem = 0;
};

// What lspci -x, -xxx and -xxxx print of each function.
inline constexpr std::size_t kHeaderBytes = 64;
inline constexpr std::size_t kStandardBytes = 256;
inline constexpr std::size_t kExtendedBytes = 4096;

struct DumpOptions {
    std::size_t bytes = kStandardBytes; // of each function
    std::optional<std::uint32_t> domain =
        std::nullopt;     // written before each address when there is one
    bool verbose = false; // indented text as that of lspci -v between the rows
    bool crLf = false;
};

// Misuse (a number out of range, two functions in one place, bus numbers that run out or run into
// the next root bus) raises std::logic_error, at the latest when something is asked.
class BusBuilder {
public:
    // One function; good for the builder that gave it and for copies of that.
    struct Node {
        std::size_t index = 0;
    };

    // Bridges. Link width 0 makes a conventional bridge without a PCI Express capability; speed 1
    // is 2.5 GT/s, 2 is 5 GT/s and so on.
    Node rootPort(unsigned rootBus, unsigned device, unsigned function, Ids ids, unsigned width = 4,
                  unsigned speed = 2);
    Node bridge(Node parent, unsigned device, unsigned function, Ids ids, unsigned width = 4,
                unsigned speed = 2);

    // Functions that are no bridges, below a bridge and on a root bus.
    Node endpoint(Node parent, unsigned device, unsigned function, Ids ids, unsigned width = 1,
                  unsigned speed = 1);
    Node rootEndpoint(unsigned rootBus, unsigned device, unsigned function, Ids ids);

    // For buses that no machine should have. The secondary bus is written as given, 0 included,
    // while everything below stays where it was; bytes are written over those of the function,
    // header and capabilities included, after all else.
    void setSecondaryBus(Node bridge, unsigned bus);
    void poke(Node node, std::size_t offset, std::initializer_list<std::uint8_t> bytes);

    // How the link at a function runs; as its own end can without this.
    void setRunningLink(Node node, unsigned width, unsigned speed);

    // Where a function stands. Buses below a root bus are numbered depth-first, lowest device and
    // function first, as firmware does.
    [[nodiscard]] std::uint8_t bus(Node node) const;
    [[nodiscard]] std::uint8_t secondaryBus(Node bridge) const;
    [[nodiscard]] std::uint8_t subordinateBus(Node bridge) const;
    [[nodiscard]] std::uint32_t handle(Node node) const; // bus << 8 | device << 3 | function
    [[nodiscard]] std::string address(Node node) const;  // "00:1c.0"
    [[nodiscard]] std::string slotPath(Node node) const; // "MR00:00,E0": nearest the node first

    // Everything there is, sorted by address, as a reader of 256 bytes and more should see it;
    // bytes that were poked are not looked at.
    [[nodiscard]] std::vector<pcibus::PciFunction> functions() const;
    [[nodiscard]] std::vector<Node> nodes() const; // in the same order

    // The bytes of one function's configuration space, kExtendedBytes of them.
    [[nodiscard]] std::vector<std::uint8_t> configSpace(Node node) const;

    // The text that lspci prints.
    [[nodiscard]] std::string dump(const DumpOptions& options = {}) const;

    // Writes below `root`, which stands for /sys, what a kernel publishes: nested folders of
    // devices with root bridges on top, links to them in bus/pci/devices, and the files of each
    // function. `configBytes` is what "config" holds.
    void writeSysfs(const std::filesystem::path& root,
                    std::size_t configBytes = kHeaderBytes) const;

private:
    static constexpr std::size_t kNoParent = static_cast<std::size_t>(-1);

    enum class Kind : std::uint8_t { endpoint, rootPort, upstream, downstream };

    struct Entry {
        Kind kind = Kind::endpoint;
        std::size_t parent = kNoParent;
        std::uint8_t device = 0;
        std::uint8_t function = 0;
        Ids ids;
        std::uint8_t width = 0;
        std::uint8_t speed = 0;
        std::optional<std::uint8_t> writtenSecondary;
        std::optional<std::pair<unsigned, unsigned>> runningLink; // width and speed
        std::map<std::size_t, std::uint8_t> poked;
        // Follow from the rest; root buses are given.
        mutable std::uint8_t bus = 0;
        mutable std::uint8_t secondary = 0;
        mutable std::uint8_t subordinate = 0;
        [[nodiscard]] bool isBridge() const { return kind != Kind::endpoint; }
        [[nodiscard]] std::uint32_t handle() const {
            return static_cast<std::uint32_t>(bus << 8 | device << 3 | function);
        }
    };

    Node add(Kind kind, std::size_t parent, unsigned rootBus, unsigned device, unsigned function,
             Ids ids, unsigned width, unsigned speed);
    const Entry& entry(Node node) const;
    static std::pair<unsigned, unsigned> running(const Entry& entry);
    [[nodiscard]] bool hasSibling(const Entry& entry) const;
    void number() const;
    [[nodiscard]] unsigned numberBelow(std::size_t index, unsigned last,
                                       const std::vector<std::vector<std::size_t>>& children) const;
    void checkNumbers() const;
    [[nodiscard]] std::uint8_t writtenSecondary(const Entry& entry) const;

    std::vector<Entry> entries_;
    mutable bool numbered_ = true;
};

// A machine near the most that bus numbers allow: 250 bridges (ten root ports, each with a switch
// of 23 downstream ports) and 1,500 endpoint functions. Always the same.
BusBuilder bigBus();

} // namespace testsupport
