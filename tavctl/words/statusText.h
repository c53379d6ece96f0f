// Statuses for people: decimal, hexadecimal and words.
#pragma once

#include <cstdint>
#include <string>

namespace tavctl {

// "0xFFFA113F"
std::string hexadecimalStatus(std::int32_t status);

// What the status means, in a few words; the system's own words for a carried system error.
std::string statusWords(std::int32_t status);

// "-388801 (0xFFFA113F): internal fault"
std::string describeStatus(std::int32_t status);

} // namespace tavctl
