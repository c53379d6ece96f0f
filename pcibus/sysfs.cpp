#include "pcibus/sysfs.h"

#include "pcibus/address.h"
#include "pcibus/configSpace.h"
#include "pcibus/fileBytes.h"

#include <array>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace pcibus {
namespace {

namespace fs = std::filesystem;

// A value of sysfs is one short line; its end is left out.
class Value {
public:
    // Empty when the file is missing or cannot be read: bridges without a link have no link files,
    // and some refuse to be read.
    explicit Value(const fs::path& file) {
        try {
            size_ = readFirstBytes(file, bytes_);
        } catch (const BusError&) {
            size_ = 0;
        }
        while (size_ != 0 && (bytes_[size_ - 1] == '\n' || bytes_[size_ - 1] == ' '))
            --size_;
    }

    [[nodiscard]] std::string_view text() const {
        return {reinterpret_cast<const char*>(bytes_.data()), size_};
    }

private:
    std::array<std::uint8_t, 64> bytes_{};
    std::size_t size_ = 0;
};

// "0x10b5"; a file that is there says nothing else.
std::uint16_t readIdentifier(const fs::path& file) {
    const Value value(file);
    std::string_view digits = value.text();
    if (digits.empty())
        return 0;
    if (digits.starts_with("0x"))
        digits.remove_prefix(2);
    unsigned number = 0;
    for (const char digit : digits) {
        if (hexValue(digit) < 0 || number > 0xFFF)
            throw BusError(pathText(file) + ": expected an identifier such as 0x10b5, got \"" +
                           std::string(value.text()) + '"');
        number = number << 4 | static_cast<unsigned>(hexValue(digit));
    }
    return static_cast<std::uint16_t>(number);
}

// Lanes in decimal; 255 stands for an unknown width.
std::uint8_t readLinkWidth(const fs::path& file) {
    const Value value(file);
    unsigned number = 0;
    for (const char digit : value.text()) {
        if (digit < '0' || digit > '9' || number > 0xFF)
            return 0;
        number = number * 10 + static_cast<unsigned>(digit - '0');
    }
    return number < 0xFF ? static_cast<std::uint8_t>(number) : std::uint8_t{0};
}

// "5.0 GT/s PCIe", the older "5 GT/s", or "Unknown".
std::uint8_t readLinkSpeed(const fs::path& file) {
    struct Speed {
        std::string_view text;
        std::uint8_t number;
    };
    static constexpr Speed kSpeeds[] = {{"2.5", 1},  {"5.0", 2},  {"8.0", 3}, {"16.0", 4},
                                        {"32.0", 5}, {"64.0", 6}, {"5", 2},   {"8", 3},
                                        {"16", 4},   {"32", 5},   {"64", 6}};
    const Value value(file);
    const std::string_view text = value.text();
    const std::size_t blank = text.find(' ');
    if (blank == std::string_view::npos || !text.substr(blank + 1).starts_with("GT/s"))
        return 0;
    for (const Speed& speed : kSpeeds) {
        if (speed.text == text.substr(0, blank))
            return speed.number;
    }
    return 0;
}

// False when the function was unplugged since its folder was listed.
bool readFunction(const fs::path& folder, PciFunction& function) {
    std::array<std::uint8_t, kHeaderSize> header{};
    const fs::path config = folder / "config";
    std::size_t size = 0;
    try {
        size = readFirstBytes(config, header);
    } catch (const BusError&) {
        // The entry itself, not what it leads to: a copied tree of links that lead nowhere is a
        // tree that cannot be read.
        std::error_code ignored;
        if (fs::symlink_status(folder, ignored).type() == fs::file_type::not_found)
            return false;
        throw;
    }
    if (size < kHeaderSize)
        throw BusError(pathText(config) + ": expected at least 64 bytes, got " +
                       std::to_string(size));
    // The header alone holds no capability, and so no loop of them.
    static_cast<void>(decodeConfigSpace(header, function));
    if (!function.isBridge())
        return true;
    function.subsystemVendorId = readIdentifier(folder / "subsystem_vendor");
    function.subsystemId = readIdentifier(folder / "subsystem_device");
    function.linkWidth = readLinkWidth(folder / "max_link_width");
    function.linkSpeed = readLinkSpeed(folder / "max_link_speed");
    return true;
}

} // namespace

Bus readSysfs(const fs::path& root) {
    const fs::path devices = root / "bus" / "pci" / "devices";
    std::vector<PciFunction> functions;
    std::error_code failure;
    fs::directory_iterator entry(devices, failure);
    for (; !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
        const std::string name = pathText(entry->path().filename());
        const auto address = readAddress(name);
        if (!address || address->length != name.size() || address->domain != 0 ||
            address->device > kMaxDevice || address->function > kMaxFunction)
            continue;
        PciFunction function;
        function.bus = address->bus;
        function.device = address->device;
        function.function = address->function;
        if (readFunction(entry->path(), function))
            functions.push_back(function);
    }
    if (failure)
        throw BusError(pathText(devices) + ": " + failure.message());
    return Bus(std::move(functions), [&](const PciFunction& function) {
        return pathText(devices / ("0000:" + addressText(function)));
    });
}

} // namespace pcibus
