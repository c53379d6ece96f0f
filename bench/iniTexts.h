// INI texts of a given shape.
#pragma once

#include <cstddef>
#include <string>

namespace bench {

struct IniShape {
    std::size_t sections;
    std::size_t keys;  // in each section
    std::size_t value; // bytes of each value
};

// The three large files.
inline constexpr IniShape kManySections{20'000, 10, 36};     // 10 MB
inline constexpr IniShape kVeryManySections{200'000, 2, 11}; // 13 MB
inline constexpr IniShape kOneLargeSection{1, 100'000, 30};  // 4.3 MB

// "[Section 000000]" and so on, each with "Key000000 = xxx..." and so on.
std::string iniText(const IniShape& shape);
std::string sectionName(std::size_t section);
std::string keyName(std::size_t key);

} // namespace bench
