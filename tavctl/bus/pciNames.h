// Names of vendors and devices from the PCI ID database, the text file "pci.ids" that most systems
// have. Without it everything has no name.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace tavctl {

class PciNames {
public:
    // Knows no names.
    PciNames() = default;

    // Reads `file`; empty: the first there is of pci.ids beside the program and in the folders
    // where systems keep it, or no names. Raises FailureException for a named file that cannot be
    // read.
    static PciNames load(const std::string& file);

    // Takes the text of such a file: lines "vvvv  name", each followed by its devices' lines,
    // "<tab>dddd  name". Anything else, and what follows the list of vendors, is passed over.
    static PciNames parse(std::string_view text);

    // Empty when there is none.
    [[nodiscard]] std::string vendor(std::uint16_t vendorId) const;
    [[nodiscard]] std::string device(std::uint16_t vendorId, std::uint16_t deviceId) const;

    // "Vendor Device", for a device without a name "Vendor Device 1234", without that of a vendor
    // either "Device 8086:1234".
    [[nodiscard]] std::string function(std::uint16_t vendorId, std::uint16_t deviceId) const;

private:
    // Ordered: whoever writes the file chooses the numbers.
    std::map<std::uint16_t, std::string> vendors_;
    std::map<std::uint64_t, std::string> devices_; // by vendor << 16 | device
};

} // namespace tavctl
