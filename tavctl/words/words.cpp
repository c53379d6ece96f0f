#include "tavctl/words/words.h"

#include "tavctl/words/characters.h"
#include "tavctl/words/printable.h"

#include <fmt/core.h>

#include <algorithm>

namespace tavctl {

namespace {

void wrapLine(std::string& out, std::string_view line, std::size_t indent, std::size_t width) {
    std::size_t column = 0;
    while (!line.empty()) {
        const std::string_view word = line.substr(0, line.find(' '));
        line.remove_prefix(std::min(word.size() + 1, line.size()));
        const std::size_t length = characterCount(word);
        if (column != 0 && column + 1 + length > width) {
            out += '\n';
            column = 0;
        }
        if (column == 0) {
            out.append(indent, ' ');
            column = indent;
        } else {
            out += ' ';
            ++column;
        }
        out += word;
        column += length;
    }
    out += '\n';
}

} // namespace

std::string inQuotes(std::string_view text) {
    constexpr std::size_t kLongest = 50;
    const std::string shown = printable(text);
    if (characterCount(shown) <= kLongest)
        return fmt::format("\"{}\"", shown);
    return fmt::format("\"{}...\"", firstCharacters(shown, kLongest));
}

std::string counted(std::size_t number, std::string_view noun) {
    return fmt::format("{} {}{}", number, noun, number == 1 ? "" : "s");
}

std::string enumerated(const std::vector<std::string>& items) {
    std::string text;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i != 0)
            text += i + 1 == items.size() ? " and " : ", ";
        text += items[i];
    }
    return text;
}

std::string separated(const std::vector<std::string>& items, std::string_view separator) {
    std::string text;
    for (const std::string& item : items) {
        if (&item != &items.front())
            text += separator;
        text += item;
    }
    return text;
}

std::string hexadecimal(std::uint32_t number, int digits) {
    return fmt::format("{:0{}X}", number, digits);
}

std::string wrapped(std::string_view text, std::size_t indent, std::size_t width) {
    std::string out;
    for (;;) {
        const std::size_t end = text.find('\n');
        wrapLine(out, text.substr(0, end), indent, width);
        if (end == std::string_view::npos)
            return out;
        text.remove_prefix(end + 1);
    }
}

} // namespace tavctl
