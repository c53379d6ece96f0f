// Texts in lines, for cells of a drawing.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tavctl {

// Lines of at most `width` characters, broken at blanks; a longer word has a line of its own.
std::vector<std::string> brokenLines(std::string_view text, std::size_t width);

// The same within `most` lines, none of them longer; what is too much goes from the middle.
std::vector<std::string> fittedLines(std::string_view text, std::size_t width, std::size_t most);

} // namespace tavctl
