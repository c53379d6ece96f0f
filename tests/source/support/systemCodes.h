// What the system answers in the ways that tests of files provoke.
#pragma once

#include <cstdint>

// The status of a system code 2: no such file.
inline constexpr std::int32_t kNoSuchFile = static_cast<std::int32_t>(0x80070002);

inline constexpr int kNoEntry = 2; // the system's codes
inline constexpr int kBadDescriptor = 9;
inline constexpr int kIsFolder = 21;
