// Which numbers the stored terminal names use with each base, kept up to date so that the next free
// one is found without reading the whole name file again.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0 {

// `text` without its decimal digits, wherever they stand.
std::string withoutDigits(std::string_view text);

class TerminalNumbers {
public:
    // Takes a stored terminal name into account, once for each entry that holds it. A name that is
    // no base followed by a number other than 0 uses no number.
    void add(const std::string& terminalName);

    // Takes one such entry out of account.
    void remove(const std::string& terminalName);

    // The lowest number from 1 upwards that no name uses with this base.
    std::uint32_t lowestFree(const std::string& base);

private:
    struct Used {
        // How many names use a number. Ordered: whoever writes the file chooses the numbers.
        std::map<std::uint32_t, std::size_t> entries;
        std::uint32_t searchFrom = 1; // every lower number is used
    };
    std::map<std::string, Used> byBase_;
};

} // namespace nZoTavManagerPciPlugin_15_0
