// What the files of the product's state have in common here. Private to this folder.
#pragma once

#include "platform/file.h"

#include <sys/stat.h>

namespace platform {

// Files that the product makes are nobody else's from the start.
inline constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

// The stream of a descriptor, which it then owns, or none of -1. Null with errno set on failure;
// the descriptor is closed.
Stream streamOf(int descriptor, const char* mode) noexcept;

} // namespace platform
