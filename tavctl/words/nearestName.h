// Guesses which word was meant by a misspelt one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavctl {

// The number of letters to insert, delete, replace or swap with their neighbour to make one text of
// the other, capitals counting as small letters.
std::size_t editDistance(std::string_view a, std::string_view b);

// The name nearest to `word`, the first of equally near ones; empty when none is near enough to be
// a likely slip (a third of its letters, at least one).
std::string nearestName(std::string_view word, const std::vector<std::string>& names);

} // namespace tavctl
