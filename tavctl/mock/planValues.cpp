#include "tavctl/mock/planValues.h"

#include "pxidrivertools/asciiText.h"
#include "tavctl/bus/linkState.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace tavctl::mock {

namespace {

using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::trim;

constexpr unsigned kWidestLink = 32;
constexpr std::uint8_t kFastestLink = 6;

std::optional<unsigned> number(std::string_view text, int base, unsigned most) {
    if (base == 16 && (text.starts_with("0x") || text.starts_with("0X")))
        text.remove_prefix(2);
    unsigned value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size() || value > most)
        return std::nullopt;
    return value;
}

unsigned required(const Said& said, int base, unsigned least, unsigned most, const char* expected) {
    const auto value = number(said.text, base, most);
    if (!value || *value < least)
        refuse(said.place, fmt::format("{} is not {}", inQuotes(said.text), expected));
    return *value;
}

// The words of a text between blanks.
class Words {
public:
    explicit Words(std::string_view text) : rest_(text) {}

    [[nodiscard]] bool atEnd() {
        rest_ = trim(rest_);
        return rest_.empty();
    }
    std::string_view peek() {
        rest_ = trim(rest_);
        return rest_.substr(0, rest_.find_first_of(" \t"));
    }
    std::string_view take() {
        const std::string_view word = peek();
        rest_.remove_prefix(word.size());
        return word;
    }
    bool take(std::string_view wanted) {
        if (peek() != wanted)
            return false;
        take();
        return true;
    }

private:
    std::string_view rest_;
};

std::optional<std::uint8_t> widthOf(std::string_view word) {
    if (!word.starts_with('x'))
        return std::nullopt;
    const auto lanes = number(word.substr(1), 10, kWidestLink);
    if (!lanes || *lanes == 0)
        return std::nullopt;
    return static_cast<std::uint8_t>(*lanes);
}

std::optional<std::uint8_t> speedOf(std::string_view word) {
    for (std::uint8_t code = 1; code <= kFastestLink; ++code) {
        if (linkSpeedName(code) == fmt::format("{} GT/s", word))
            return code;
    }
    return std::nullopt;
}

// "4" or "1 of 4", in either unit.
template <typename Read>
bool readPair(Words& words, Read read, std::uint8_t& runs, std::uint8_t& maximum) {
    const auto first = read(words.peek());
    if (!first)
        return false;
    words.take();
    maximum = *first;
    if (!words.take("of"))
        return true;
    const auto second = read(words.take());
    if (!second || *second < *first)
        return false;
    runs = *first;
    maximum = *second;
    return true;
}

bool readWhole(Words& words, LinkWish& wish) {
    if (words.peek().starts_with('x') && !readPair(words, widthOf, wish.width, wish.maximumWidth))
        return false;
    if (words.atEnd())
        return wish.maximumWidth != 0;
    return readPair(words, speedOf, wish.speed, wish.maximumSpeed) && words.take("GT/s") &&
           words.atEnd();
}

} // namespace

void refuse(const std::string& place, std::string reason, std::string hint) {
    throw FailureException({"plan the bus", place, std::move(reason), {}, {}, std::move(hint)},
                           ExitStatus::problemFound);
}

LinkWish readLink(const Said& said) {
    LinkWish wish;
    Words words(said.text);
    if (!readWhole(words, wish))
        refuse(said.place, fmt::format("{} is no link; one is written as x4, x1 of x4, 8 GT/s or "
                                       "x4 2.5 of 8 GT/s",
                                       inQuotes(said.text)));
    return wish;
}

std::uint8_t readBus(const Said& said) {
    return static_cast<std::uint8_t>(
        required(said, 16, 1, 0xFF, "the hexadecimal number of a bus, 1 to FF"));
}

std::uint8_t readRootBus(const Said& said) {
    return static_cast<std::uint8_t>(
        required(said, 16, 0, 0xFF, "the hexadecimal number of a bus, 0 to FF"));
}

unsigned readCount(const Said& said) {
    return required(said, 10, 0, 254, "a number of buses, 0 to 254");
}

bool readFlag(const Said& said) {
    return required(said, 10, 0, 1, "0 or 1") != 0;
}

std::uint16_t readIdentifier(const Said& said) {
    return static_cast<std::uint16_t>(
        required(said, 16, 0, 0xFFFF, "a hexadecimal number of up to four digits"));
}

std::vector<Said> readList(const Said& said) {
    std::vector<Said> items;
    for (std::string_view rest = said.text;;) {
        const std::size_t comma = rest.find(',');
        items.push_back({std::string(trim(rest.substr(0, comma))), said.place});
        if (items.back().text.empty())
            refuse(said.place, "an item of the list is empty");
        if (comma == std::string_view::npos)
            return items;
        rest.remove_prefix(comma + 1);
    }
}

} // namespace tavctl::mock
