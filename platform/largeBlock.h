// Memory for large pieces of data, in pages as large as the system has: each page of a fresh block
// costs an interruption when it is first touched.
#pragma once

#include <cstddef>

namespace platform {

// Below this a block is better allocated as any other.
inline constexpr std::size_t kLargeBlock = std::size_t{2} << 20;

// A block that std::realloc and std::free take, or null when there is no memory.
void* allocateLargeBlock(std::size_t size) noexcept;

} // namespace platform
