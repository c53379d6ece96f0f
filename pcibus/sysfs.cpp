#include "pcibus/sysfs.h"

#include "pcibus/address.h"
#include "pcibus/configSpace.h"
#include "pcibus/fileBytes.h"
#include "platform/folderReader.h"

#include <array>
#include <cerrno>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace pcibus {
namespace {

namespace fs = std::filesystem;

// The folder of all functions, and the one whose files are being read.
class FunctionFiles {
public:
    explicit FunctionFiles(const fs::path& devices) : path_(devices), reader_(devices) {}

    [[nodiscard]] const fs::path& path() const { return path_; }
    std::vector<std::string> names() {
        std::vector<std::string> result;
        if (const int failure = reader_.list(result); failure != 0)
            refuse(path_, failure);
        return result;
    }

    [[nodiscard]] const std::string& function() const { return function_; }
    void enter(const std::string& function) { function_ = function; }
    [[nodiscard]] fs::path pathOf(const char* file) const { return path_ / function_ / file; }
    // 0, or the error number.
    int read(const char* file, std::span<std::uint8_t> bytes, std::size_t& size) {
        name_.assign(function_).append(1, '/').append(file);
        return reader_.readFirst(name_, bytes, size);
    }

    [[noreturn]] static void refuse(const fs::path& file, int code) {
        throw BusError(pathText(file) + ": " +
                       (code != 0 ? std::generic_category().message(code) : "cannot be read"));
    }

private:
    const fs::path& path_;
    platform::FolderReader reader_;
    std::string function_;
    std::string name_; // here so that its memory is used again
};

// A value of sysfs is one short line; its end is left out.
class Value {
public:
    // Empty when the file is missing or cannot be read: bridges without a link have no link files,
    // and some refuse to be read.
    Value(FunctionFiles& files, const char* file) {
        if (files.read(file, bytes_, size_) != 0)
            size_ = 0;
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

// "0x10b5"; 0 for anything else.
std::uint16_t readIdentifier(FunctionFiles& files, const char* file) {
    const Value value(files, file);
    std::string_view digits = value.text();
    if (digits.starts_with("0x"))
        digits.remove_prefix(2);
    unsigned number = 0;
    for (const char digit : digits) {
        if (hexValue(digit) < 0 || number > 0xFFF)
            return 0;
        number = number << 4 | static_cast<unsigned>(hexValue(digit));
    }
    return static_cast<std::uint16_t>(number);
}

// Lanes in decimal; 255 stands for an unknown width.
std::uint8_t readLinkWidth(FunctionFiles& files, const char* file) {
    const Value value(files, file);
    unsigned number = 0;
    for (const char digit : value.text()) {
        if (digit < '0' || digit > '9' || number > 0xFF)
            return 0;
        number = number * 10 + static_cast<unsigned>(digit - '0');
    }
    return number < 0xFF ? static_cast<std::uint8_t>(number) : std::uint8_t{0};
}

// "5.0 GT/s PCIe", the older "5 GT/s", or "Unknown".
std::uint8_t readLinkSpeed(FunctionFiles& files, const char* file) {
    struct Speed {
        std::string_view text;
        std::uint8_t number;
    };
    static constexpr Speed kSpeeds[] = {{"2.5", 1},  {"5.0", 2},  {"8.0", 3}, {"16.0", 4},
                                        {"32.0", 5}, {"64.0", 6}, {"5", 2},   {"8", 3},
                                        {"16", 4},   {"32", 5},   {"64", 6}};
    const Value value(files, file);
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

// The process or the system is short of something, which says nothing about the function whose file
// was asked for.
bool isShortage(int failure) {
    return failure == EMFILE || failure == ENFILE || failure == ENOMEM;
}

enum class Read { done, unplugged, unreadable, dead };

// Reads as many bytes as there are, up to the size of `config`, which becomes that number.
Read readFunction(FunctionFiles& files, PciFunction& function, std::span<std::uint8_t>& config) {
    std::size_t size = 0;
    const int failure = files.read("config", config, size);
    config = config.first(failure == 0 ? size : 0);
    if (isShortage(failure))
        FunctionFiles::refuse(files.pathOf("config"), failure);
    if (failure != 0 || size < kHeaderSize) {
        // The entry itself, not what it leads to: a link of a copied tree that leads nowhere is a
        // function that cannot be read.
        std::error_code ignored;
        const bool isThere = fs::symlink_status(files.path() / files.function(), ignored).type() !=
                             fs::file_type::not_found;
        return isThere ? Read::unreadable : Read::unplugged;
    }
    if (isDead(config))
        return Read::dead;
    decodeConfigSpace(config.first(kHeaderSize), function);
    if (!function.isBridge())
        return Read::done;
    function.subsystemVendorId = readIdentifier(files, "subsystem_vendor");
    function.subsystemId = readIdentifier(files, "subsystem_device");
    function.linkWidth = readLinkWidth(files, "max_link_width");
    function.linkSpeed = readLinkSpeed(files, "max_link_speed");
    return Read::done;
}

} // namespace

Bus readSysfs(const fs::path& root, LeftOut* leftOut, const FunctionSink& sink) {
    const fs::path devices = root / "bus" / "pci" / "devices";
    FunctionFiles files(devices);
    std::vector<PciFunction> functions;
    LeftOut counts;
    std::array<std::uint8_t, kStandardSize> bytes{};
    for (const std::string& name : files.names()) {
        const auto address = readAddress(name);
        if (!address || address->length != name.size() || address->device > kMaxDevice ||
            address->function > kMaxFunction)
            continue;
        const bool isOther = address->domain != 0;
        counts.otherDomains += isOther ? 1 : 0;
        if (isOther && !sink)
            continue;
        PciFunction function;
        function.bus = address->bus;
        function.device = address->device;
        function.function = address->function;
        files.enter(name);
        std::span config = std::span(bytes).first(sink ? kStandardSize : kHeaderSize);
        const Read read = readFunction(files, function, config);
        if (read == Read::done && sink)
            sink(address->domain, function, config);
        if (isOther)
            continue;
        if (read == Read::done)
            functions.push_back(function);
        counts.unreadable += read == Read::unreadable ? 1 : 0;
        counts.dead += read == Read::dead ? 1 : 0;
    }
    Bus bus(std::move(functions), [&](const PciFunction& function) {
        return pathText(devices / ("0000:" + addressText(function)));
    });
    if (leftOut != nullptr)
        *leftOut = counts;
    return bus;
}

} // namespace pcibus
