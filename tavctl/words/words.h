// Small pieces of text that messages are put together from.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tavctl {

// "text", with the quotes; of a long text its beginning and "...".
std::string inQuotes(std::string_view text);

// "1 label", "3 labels".
std::string counted(std::size_t number, std::string_view noun);

// "a", "a and b", "a, b and c".
std::string enumerated(const std::vector<std::string>& items);

// "a,b,c" for the separator ",".
std::string separated(const std::vector<std::string>& items, std::string_view separator);

// A number in upper-case hexadecimal, with at least that many digits.
std::string hexadecimal(std::uint32_t number, int digits);

// Breaks a text at blanks into lines of at most `width` characters, each behind `indent` blanks
// (which count), the last one with its line feed. A longer word has a line of its own. Line feeds
// in the text stay.
std::string wrapped(std::string_view text, std::size_t indent, std::size_t width = 80);

} // namespace tavctl
