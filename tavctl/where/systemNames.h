// What the operating system calls the devices that it drives through PCI functions: network
// interfaces, disks, terminals and the rest of what stands below /sys/class.
#pragma once

#include "tavctl/bus/busAddress.h"

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tavctl {

struct SystemName {
    std::string kind;    // the folder below /sys/class: "net", "block"
    std::string name;    // "eth2"; of names with slashes in /dev as there
    bool isPart = false; // of another one, as a partition, or one of several ways, is of a disk
};

class SystemNames {
public:
    // Knows none, as for a recorded bus that is a text.
    SystemNames() = default;

    // Of a folder that stands for /sys, live or copied with its links. What cannot be read is
    // passed over.
    explicit SystemNames(std::filesystem::path root);

    [[nodiscard]] bool areKnown() const { return !root_.empty(); }

    // By kind and name.
    [[nodiscard]] std::vector<SystemName> of(const DomainAddress& address) const;

    // The functions that something with this name is driven through, each once, in the order of
    // their addresses. A name is one below /sys/class or in /dev, or a path below /sys (the folder
    // that stands for it, too).
    [[nodiscard]] std::vector<DomainAddress> find(const std::string& name) const;

    // All names, for guessing what was meant.
    [[nodiscard]] std::vector<std::string> names() const;

private:
    using Place = std::pair<std::uint32_t, std::uint32_t>; // domain and handle

    void addEntry(const std::string& kind, const std::filesystem::path& entry);

    std::filesystem::path root_;
    std::multimap<Place, SystemName> byPlace_;
    std::multimap<std::string, Place> byName_;
};

} // namespace tavctl
