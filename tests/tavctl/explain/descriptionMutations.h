// Descriptions with something changed at random, for tests that hold two readers of them together.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace testtavctl {

// The sample descriptions and the sound fixtures, as texts.
std::vector<std::string> sampleDescriptions();

// One to four changes: lines dropped, doubled, swapped or taken from elsewhere, values emptied or
// replaced, characters put in, taken out or replaced. The same for the same state of `random`.
std::string mutated(std::string text, std::mt19937& random);

// A number below `bound`, the same with every standard library.
std::size_t below(std::mt19937& random, std::size_t bound);

} // namespace testtavctl
