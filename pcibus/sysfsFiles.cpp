#include "pcibus/sysfsFiles.h"

#include "pcibus/address.h"
#include "pcibus/busError.h"
#include "platform/pathBelow.h"

#include <array>
#include <string_view>
#include <system_error>

namespace pcibus {
namespace {

// A value of sysfs is one short line; its end is left out.
class Value {
public:
    // Empty when the file is missing or cannot be read.
    Value(SysfsFiles& files, const char* file) {
        if (files.readLine(file, bytes_, size_) != 0)
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

} // namespace

std::vector<std::string> SysfsFiles::names() {
    std::vector<std::string> result;
    if (const int failure = reader_.list(result); failure != 0)
        refuse(path_, failure);
    return result;
}

std::string SysfsFiles::path() const {
    return platform::pathBelow(path_, function_);
}

std::string SysfsFiles::pathOf(const char* file) const {
    return platform::pathBelow(path(), file);
}

int SysfsFiles::read(const char* file, std::span<std::uint8_t> bytes, std::size_t& size) {
    return reader_.readFirst(nameOf(file), bytes, size);
}

int SysfsFiles::readLine(const char* file, std::span<std::uint8_t> bytes, std::size_t& size) {
    return reader_.readLine(nameOf(file), bytes, size);
}

const std::string& SysfsFiles::nameOf(const char* file) {
    return name_.assign(function_).append(1, '/').append(file);
}

std::uint16_t SysfsFiles::identifier(const char* file) {
    const Value value(*this, file);
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

std::uint8_t SysfsFiles::linkWidth(const char* file) {
    const Value value(*this, file);
    unsigned number = 0;
    for (const char digit : value.text()) {
        if (digit < '0' || digit > '9' || number > 0xFF)
            return 0;
        number = number * 10 + static_cast<unsigned>(digit - '0');
    }
    return number < 0xFF ? static_cast<std::uint8_t>(number) : std::uint8_t{0};
}

std::uint8_t SysfsFiles::linkSpeed(const char* file) {
    struct Speed {
        std::string_view text;
        std::uint8_t number;
    };
    static constexpr Speed kSpeeds[] = {{"2.5", 1},  {"5.0", 2},  {"8.0", 3}, {"16.0", 4},
                                        {"32.0", 5}, {"64.0", 6}, {"5", 2},   {"8", 3},
                                        {"16", 4},   {"32", 5},   {"64", 6}};
    const Value value(*this, file);
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

void SysfsFiles::refuse(const std::string& file, int code) {
    throw BusError(file + ": " +
                   (code != 0 ? std::generic_category().message(code) : "cannot be read"));
}

} // namespace pcibus
